#include "apps/tarn/ProgressBar.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>

namespace tarn {

namespace {

constexpr int kWidth = 30;
constexpr const char* kErase = "\r\033[K";

std::atomic<bool> isOnLine = false;

}  // namespace

ProgressBar::ProgressBar(bool wanted) : shown_(wanted && isatty(STDERR_FILENO) != 0) {
    Show(0);
}

ProgressBar::~ProgressBar() {
    if (!shown_) return;
    std::fputs(kErase, stderr);
    isOnLine = false;
}

void ProgressBar::Show(int percent) {
    if (!shown_) return;
    const int filled = std::clamp(percent, 0, 100) * kWidth / 100;
    const std::string bar = std::string(static_cast<std::size_t>(filled), '#') +
                            std::string(static_cast<std::size_t>(kWidth - filled), '.');
    std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), percent);
    std::fflush(stderr);
    isOnLine = true;
}

std::string ProgressBar::Erasure() {
    return isOnLine ? kErase : "";
}

}  // namespace tarn
