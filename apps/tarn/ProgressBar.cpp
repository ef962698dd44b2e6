#include "apps/tarn/ProgressBar.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace tarn {

namespace {

constexpr int kWidth = 30;

}  // namespace

ProgressBar::ProgressBar(bool wanted) : shown_(wanted && isatty(STDERR_FILENO) != 0) {
    Show(0);
}

ProgressBar::~ProgressBar() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void ProgressBar::Show(int percent) {
    if (!shown_) return;
    const int filled = std::clamp(percent, 0, 100) * kWidth / 100;
    const std::string bar = std::string(static_cast<std::size_t>(filled), '#') +
                            std::string(static_cast<std::size_t>(kWidth - filled), '.');
    std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), percent);
    std::fflush(stderr);
}

}  // namespace tarn
