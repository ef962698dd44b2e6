#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace tarn {

/// The SHA-256 (FIPS 180-4) of bytes that come piece by piece. How they are divided makes no difference.
class Sha256 {
 public:
    static constexpr std::size_t kSize = 32;
    using Digest = std::array<std::uint8_t, kSize>;

    Sha256();
    ~Sha256();
    Sha256(Sha256&&) noexcept;
    Sha256& operator=(Sha256&&) noexcept;

    void Add(const void* bytes, std::size_t size);
    /// Ends it; the object begins anew behind that.
    Digest Take();

 private:
    struct State;
    std::unique_ptr<State> state_;
};

/// In hexadecimal digits, as sha256sum prints it.
std::string HexOf(const Sha256::Digest& digest);

}  // namespace tarn
