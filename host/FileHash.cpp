#include "host/FileHash.h"

#include <nettle/sha2.h>

#include <array>
#include <cstdint>
#include <fstream>

#include "host/InputError.h"

namespace tarn {

std::string HashOfFile(const std::string& path) {
    constexpr std::size_t kBlock = std::size_t{1} << 16;
    std::ifstream file(path, std::ios::binary);
    if (!file) throw InputError(Quoted(path) + " can't be read");
    sha256_ctx context;
    sha256_init(&context);
    std::array<char, kBlock> block{};
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0) {
        sha256_update(&context, static_cast<std::size_t>(file.gcount()),
                      reinterpret_cast<const std::uint8_t*>(block.data()));
    }
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&context, digest.size(), digest.data());
    constexpr const char* kDigits = "0123456789abcdef";
    constexpr unsigned kHalfByte = 4;
    constexpr unsigned kLowBits = 0xF;
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += kDigits[byte >> kHalfByte];
        text += kDigits[byte & kLowBits];
    }
    return text;
}

}  // namespace tarn
