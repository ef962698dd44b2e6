#include "host/Sha256.h"

#include <nettle/sha2.h>

namespace tarn {

struct Sha256::State {
    sha256_ctx context;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
    sha256_init(&state_->context);
}

Sha256::~Sha256() = default;
Sha256::Sha256(Sha256&&) noexcept = default;
Sha256& Sha256::operator=(Sha256&&) noexcept = default;

void Sha256::Add(const void* bytes, std::size_t size) {
    sha256_update(&state_->context, size, static_cast<const std::uint8_t*>(bytes));
}

Sha256::Digest Sha256::Take() {
    static_assert(kSize == SHA256_DIGEST_SIZE);
    Digest digest{};
    sha256_digest(&state_->context, digest.size(), digest.data());
    return digest;
}

std::string HexOf(const Sha256::Digest& digest) {
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
