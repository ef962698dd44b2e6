#pragma once

/// Marks what the shared library exports; everything else stays inside.
#define TARN_EXPORT __attribute__((visibility("default")))
