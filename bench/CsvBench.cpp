// Reading a table of comma-separated values, from memory into columns: MB/s of the text.

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <random>
#include <string>

#include "host/table/TableLoader.h"

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

}  // namespace
