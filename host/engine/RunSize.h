#pragma once

#include <cstddef>
#include <string>

#include "host/Json.h"
#include "host/table/Table.h"

namespace tarn {

// What a run takes that grows faster than its table: a pair for any two of the samples that are compared, a range of
// samples that is looked through step by step, a square table of the categories of a pair, a result for every field and
// test. Small inputs can ask for more than a machine has, or for days, so it is worked out before the run begins.

/// What adds up over a run. An estimate from above: what is compared only where a test finds a difference counts in
/// full. Borrows the table.
class RunSize {
 public:
    RunSize(const Table& table, bool isBrief);

    void AddTests(std::size_t count) { tests_ += static_cast<double>(count); }
    /// Related fields of a test.
    void AddFields(std::size_t count) { fields_ += static_cast<double>(count); }
    /// Each of `times` tests compares each of the samples with each other one.
    void AddPairs(std::size_t samples, std::size_t times);
    /// Each of `times` tests looks through the ranges of so many samples, step by step.
    void AddSteps(std::size_t samples, std::size_t times);
    /// A square table of so many categories.
    void AddSquare(std::size_t categories);
    /// Of a field of the table; 0 for one without categories.
    std::size_t CategoriesOf(const std::string& field) const;

    /// Throws an `InputError` if the run may take more than `limit` bytes; 0: whatever it takes. `source` stands for
    /// what asks for the run in the message, which says how much, what for, and how the limit is raised. Throws one,
    /// too, for more samples step by step than a run is done with in some seconds, whatever the limit.
    void Check(const std::string& source, std::size_t limit) const;

 private:
    const Table& table_;
    double bytesOfTest_;
    double bytesOfField_;
    double bytesOfTable_;
    double tests_ = 0;
    double fields_ = 0;
    double pairs_ = 0;
    double ranges_ = 0;
    std::size_t steppedSamples_ = 0;
    double square_ = 0;
};

/// Checks what a request asks of a table. Throws as `RunSize::Check` does.
void CheckSizeOfRequest(const Json& request, const std::string& source, const Table& table, std::size_t limit);

/// Throws the `InputError` for something that may take more bytes than `limit`: how many, what for (`needs`), and how
/// the limit is raised.
[[noreturn]] void FailForMemory(const std::string& source, double bytes, const std::string& needs, std::size_t limit);

/// Bytes as a message shows them: "1.5 GiB".
std::string ShownBytes(double bytes);

}  // namespace tarn
