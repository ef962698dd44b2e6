#pragma once

namespace tarn {

/// The text of host/messages/en.json, put into the program by the build.
extern const char* const kEnglishMessages;

}  // namespace tarn
