#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace tarn {

/// Makes a pipe with the given bytes the standard input of the process as long as the object lives. The
/// test reads it to its end.
class StandardInput {
 public:
    explicit StandardInput(std::string bytes) : before_(dup(STDIN_FILENO)) {
        int ends[2];
        if (pipe(ends) != 0) throw std::runtime_error("no pipe");
        dup2(ends[0], STDIN_FILENO);
        close(ends[0]);
        writer_ = std::thread([bytes = std::move(bytes), end = ends[1]] {
            // Portions that are no divisor of any block show what depends on the size of a read.
            constexpr std::size_t kPortion = 777;
            for (std::size_t sent = 0; sent < bytes.size();) {
                const ssize_t count = write(end, bytes.data() + sent, std::min(kPortion, bytes.size() - sent));
                if (count <= 0) break;
                sent += static_cast<std::size_t>(count);
            }
            close(end);
        });
    }
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;
    ~StandardInput() {
        writer_.join();
        dup2(before_, STDIN_FILENO);
        close(before_);
    }

 private:
    int before_;
    std::thread writer_;
};

}  // namespace tarn
