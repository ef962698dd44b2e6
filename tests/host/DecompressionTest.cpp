#include "host/Decompression.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>
#include <vector>

#include "host/ByteSource.h"
#include "tests/host/InputErrorOf.h"

namespace tarn {
namespace {

/// The text as a part of a gzip file.
std::string Gzip(const std::string& text) {
    constexpr int kGzipAlone = 16 + MAX_WBITS;
    constexpr int kDefaultMemory = 8;
    z_stream stream = {};
    EXPECT_EQ(deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, kGzipAlone, kDefaultMemory, Z_DEFAULT_STRATEGY),
              Z_OK);
    std::string packed(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(packed.size() - stream.avail_out);
    deflateEnd(&stream);
    return packed;
}

std::string Repeated(const std::string& text, std::size_t times) {
    std::string repeated;
    for (std::size_t i = 0; i < times; ++i) repeated += text;
    return repeated;
}

/// How many bytes come out.
std::size_t Unpacked(const std::string& packed) {
    ByteSource source =
        ByteSource::Through(ByteSource::FromMemory("t.csv.gz", packed), DecompressionOf(packed.substr(0, 4)));
    std::vector<char> buffer(std::size_t{1} << 20);
    std::size_t all = 0;
    for (std::size_t read = 0; (read = source.Read(buffer.data(), buffer.size())) > 0;) all += read;
    return all;
}

constexpr std::size_t kPart = std::size_t{4} << 20;

TEST(Decompression, UnpacksWhatIsNotFarLargerThanItsFile) {
    const std::string part = Gzip(Repeated("1\n", kPart / 2));
    EXPECT_EQ(Unpacked(Repeated(part, 64)), 64 * kPart);  // 256 MiB, however small the file is
}

// 272 MiB of 272 KiB: gzip packs a byte for each thousand of such a text.
TEST(Decompression, RefusesASmallFileWithRowsWithoutAnEnd) {
    const std::string part = Gzip(Repeated("1\n", kPart / 2));
    EXPECT_EQ(InputErrorOf([&] { Unpacked(Repeated(part, 68)); }),
              "t.csv.gz: unpacks to more than 200 times its size; expected less, or the unpacked file");
}

}  // namespace
}  // namespace tarn
