#include "progress_bar.h"

#include <cstdio>
#include <string>
#include <unistd.h>

progress_bar::progress_bar(bool wanted) : visible_(wanted && isatty(STDERR_FILENO) != 0) {}

progress_bar::~progress_bar() {
    if (visible_)
        std::fputs("\r\033[K", stderr);
}

void progress_bar::show(double share) {
    const int percent = static_cast<int>(100 * share);
    if (!visible_ || percent == percent_)
        return;
    percent_ = percent;
    const std::string filled(static_cast<std::size_t>(percent / 2), '#');
    std::fprintf(stderr, "\r[%-50s] %3d%%", filled.c_str(), percent);
}
