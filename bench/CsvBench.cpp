// Reading a table of comma-separated values, from memory into columns: MB/s of the text.

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <random>
#include <string>
#include <utility>

#include "host/table/TableLoader.h"
#include "host/table/TableReading.h"

namespace {

/// Rows of cells, each as `cell` writes it.
template <typename Cell>
std::string Csv(std::size_t rows, std::size_t columns, Cell cell) {
    std::string text;
    for (std::size_t column = 0; column < columns; ++column)
        text += (column == 0 ? "x" : ",x") + std::to_string(column);
    text += '\n';
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            if (column > 0) text += ',';
            cell(text);
        }
        text += '\n';
    }
    return text;
}

std::string NormalNumbers(std::size_t rows, std::size_t columns) {
    std::mt19937_64 random(20261);
    std::normal_distribution<double> normal;
    return Csv(rows, columns, [&](std::string& text) {
        std::array<char, 32> digits{};
        std::snprintf(digits.data(), digits.size(), "%.17g", normal(random));
        text += digits.data();
    });
}

std::string OneToSeven(std::size_t rows, std::size_t columns) {
    std::mt19937_64 random(20262);
    return Csv(rows, columns, [&](std::string& text) { text += static_cast<char>('1' + random() % 7); });
}

std::string Categories(std::size_t rows, std::size_t columns, const char* quote) {
    constexpr std::array kWords = {"control", "low dose", "high dose", "placebo", "washout"};
    std::mt19937_64 random(20263);
    return Csv(rows, columns,
               [&](std::string& text) { text.append(quote).append(kWords[random() % kWords.size()]).append(quote); });
}

void Read(benchmark::State& state, const std::string& text) {
    tarn::LoadOptions options;
    options.threads = static_cast<unsigned>(state.range(0));
    tarn::ByteSource source = tarn::ByteSource::FromMemory("data.csv", text);
    for (auto _ : state) {
        source.Rewind();
        benchmark::DoNotOptimize(tarn::LoadTable(source, {}, options));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void ReadNumbers(benchmark::State& state) {
    static const std::string text = NormalNumbers(1'000'000, 2);
    Read(state, text);
}
void ReadNumbersOfManyFields(benchmark::State& state) {
    static const std::string text = NormalNumbers(2'000, 2'000);
    Read(state, text);
}
void ReadOneToSeven(benchmark::State& state) {
    static const std::string text = OneToSeven(1'000'000, 6);
    Read(state, text);
}
void ReadCategories(benchmark::State& state) {
    static const std::string text = Categories(1'000'000, 2, "");
    Read(state, text);
}
void ReadQuotedCategories(benchmark::State& state) {
    static const std::string text = Categories(1'000'000, 2, "\"");
    Read(state, text);
}

/// As the command reads, which looks at a table first: any text, of any form.
void ReadAsCommand(benchmark::State& state, const std::string& bytes, std::size_t textSize) {
    tarn::LoadOptions options;
    options.threads = static_cast<unsigned>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        tarn::ByteSource source = tarn::ByteSource::FromMemory("data.csv", bytes);
        state.ResumeTiming();
        benchmark::DoNotOptimize(tarn::ReadTable(std::move(source), {}, options, {}));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * textSize));
}

std::string Gzipped(const std::string& text) {
    z_stream stream = {};
    constexpr int kGzip = 16 + MAX_WBITS;
    constexpr int kMemory = 8;
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzip, kMemory, Z_DEFAULT_STRATEGY);
    std::string bytes(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    deflate(&stream, Z_FINISH);
    bytes.resize(stream.total_out);
    deflateEnd(&stream);
    return bytes;
}

std::string WithDecimalCommas(std::string text) {
    std::ranges::replace(text, ',', ';');
    std::ranges::replace(text, '.', ',');
    return text;
}

void ReadNumbersAsCommand(benchmark::State& state) {
    static const std::string text = NormalNumbers(1'000'000, 2);
    ReadAsCommand(state, text, text.size());
}
void ReadDecimalCommas(benchmark::State& state) {
    static const std::string text = WithDecimalCommas(NormalNumbers(1'000'000, 2));
    ReadAsCommand(state, text, text.size());
}
void ReadGzip(benchmark::State& state) {
    static const std::string text = NormalNumbers(1'000'000, 2);
    static const std::string bytes = Gzipped(text);
    ReadAsCommand(state, bytes, text.size());
}
/// What zlib itself takes for the same bytes.
void ReadGzipByZlibAlone(benchmark::State& state) {
    static const std::string text = NormalNumbers(1'000'000, 2);
    static const std::string bytes = Gzipped(text);
    std::string block(std::size_t{1} << 19, '\0');
    for (auto _ : state) {
        z_stream stream = {};
        constexpr int kGzip = 16 + MAX_WBITS;
        inflateInit2(&stream, kGzip);
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
        stream.avail_in = static_cast<uInt>(bytes.size());
        int outcome = Z_OK;
        while (outcome == Z_OK) {
            stream.next_out = reinterpret_cast<Bytef*>(block.data());
            stream.avail_out = static_cast<uInt>(block.size());
            outcome = inflate(&stream, Z_NO_FLUSH);
        }
        inflateEnd(&stream);
        benchmark::DoNotOptimize(block.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

/// With one thread and with two.
#define TARN_CSV_BENCHMARK(name)        \
    BENCHMARK(name)                     \
        ->ArgName("threads")            \
        ->Arg(1)                        \
        ->Arg(2)                        \
        ->Unit(benchmark::kMillisecond) \
        ->UseRealTime()                 \
        ->MeasureProcessCPUTime()
TARN_CSV_BENCHMARK(ReadNumbers);
TARN_CSV_BENCHMARK(ReadNumbersOfManyFields);
TARN_CSV_BENCHMARK(ReadOneToSeven);
TARN_CSV_BENCHMARK(ReadCategories);
TARN_CSV_BENCHMARK(ReadQuotedCategories);
TARN_CSV_BENCHMARK(ReadNumbersAsCommand);
TARN_CSV_BENCHMARK(ReadDecimalCommas);
TARN_CSV_BENCHMARK(ReadGzip);
BENCHMARK(ReadGzipByZlibAlone)
    ->ArgName("threads")
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime();

}  // namespace
