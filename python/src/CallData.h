#pragma once

#include <nanobind/nanobind.h>

#include <string>
#include <vector>

#include "python/src/TableInput.h"

namespace tarn {

/// The data of one call, put together by the package. What lends memory to it is kept until the table is read.
class CallData {
 public:
    CallData() = default;
    CallData(const CallData&) = delete;
    CallData& operator=(const CallData&) = delete;

    /// A stream of the Arrow C interface in its capsule, which is used up. `name`: of the column, where the stream has
    /// one; "" for a stream of whole rows.
    void AddStream(const nanobind::capsule& capsule, const std::string& name);
    /// Numbers in a buffer; `format` as the Arrow C interface writes it.
    void AddNumbers(const std::string& name, const std::string& format, nanobind::handle values, bool areBooleans);
    /// Codes in a buffer, from 0 and below 0 for what is missing, with the texts that they stand for.
    void AddTexts(const std::string& name, const std::string& format, nanobind::handle codes,
                  const std::vector<std::string>& texts, bool areListed, bool areOrdered);
    /// The same with numbers.
    void AddNumberCodes(const std::string& name, const std::string& format, nanobind::handle codes,
                        std::vector<double> numbers, bool areBooleans, bool areOrdered);
    /// Samples of doubles in buffers, below one another as one column, and another one that says which sample a row is
    /// of.
    void AddSamples(const std::string& name, const std::string& group, const std::vector<nanobind::object>& samples,
                    const std::vector<std::string>& names, bool areOrdered);
    /// A column that can't be tested, with what it holds: it is refused where a test asks for it.
    void AddRefused(const std::string& name, const std::string& what);

    InputData Take();

 private:
    MemorySource& AddMemory(InputColumn column, nanobind::handle values);

    InputData sources_;
};

}  // namespace tarn
