#include "host/FileHash.h"

#include <array>
#include <fstream>

#include "host/InputError.h"
#include "host/Sha256.h"

namespace tarn {

std::string HashOfFile(const std::string& path) {
    constexpr std::size_t kBlock = std::size_t{1} << 16;
    std::ifstream file(path, std::ios::binary);
    if (!file) throw InputError(Quoted(path) + " can't be read");
    Sha256 hash;
    std::array<char, kBlock> block{};
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0) {
        hash.Add(block.data(), static_cast<std::size_t>(file.gcount()));
    }
    return HexOf(hash.Take());
}

}  // namespace tarn
