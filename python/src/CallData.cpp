#include "python/src/CallData.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "host/InputError.h"

namespace tarn {

namespace nb = nanobind;

namespace {

/// The formats of the Arrow C interface for texts, doubles and the codes of samples.
constexpr const char* kTexts = "U";
constexpr const char* kDoubles = "g";
constexpr const char* kSampleCodes = "i";

/// Memory that a Python object lends by the buffer protocol.
class LentMemory {
 public:
    explicit LentMemory(nb::handle owner) {
        if (PyObject_GetBuffer(owner.ptr(), &view_, PyBUF_C_CONTIGUOUS) != 0) throw nb::python_error();
    }
    LentMemory(const LentMemory&) = delete;
    LentMemory& operator=(const LentMemory&) = delete;
    ~LentMemory() {
        const nb::gil_scoped_acquire locked;
        PyBuffer_Release(&view_);
    }

    const void* Values() const { return view_.buf; }
    std::int64_t Count() const { return view_.itemsize == 0 ? 0 : view_.len / view_.itemsize; }

 private:
    Py_buffer view_{};
};

InputColumn NumberColumn(const std::string& name, const std::string& format) {
    InputColumn column;
    column.name = name;
    column.format = ReadColumnFormat(format);
    column.type = column.format.Type();
    return column;
}

InputColumn CodedColumn(const std::string& name, const std::string& format, const char* entries, bool areListed,
                        bool areOrdered) {
    InputColumn column = NumberColumn(name, entries);
    column.codes = ReadColumnFormat(format);
    column.isListed = areListed;
    column.isOrdered = areOrdered;
    column.hasMissingCodes = true;
    return column;
}

}  // namespace

void CallData::AddStream(const nb::capsule& capsule, const std::string& name) {
    auto* const stream = static_cast<ArrowArrayStream*>(PyCapsule_GetPointer(capsule.ptr(), "arrow_array_stream"));
    if (stream == nullptr) throw nb::python_error();
    if (stream->release == nullptr) throw InputError("the data was read before; expected some that is new");
    sources_.push_back(std::make_unique<StreamSource>(*stream, name));
}

void CallData::AddNumbers(const std::string& name, const std::string& format, nb::handle values, bool areBooleans) {
    InputColumn column = NumberColumn(name, format);
    if (areBooleans) column.type = FieldType::kBoolean;
    AddMemory(std::move(column), values);
}

void CallData::AddTexts(const std::string& name, const std::string& format, nb::handle codes,
                        const std::vector<std::string>& texts, bool areListed, bool areOrdered) {
    AddMemory(CodedColumn(name, format, kTexts, areListed, areOrdered), codes).SetEntries(texts);
}

void CallData::AddNumberCodes(const std::string& name, const std::string& format, nb::handle codes,
                              std::vector<double> numbers, bool areBooleans, bool areOrdered) {
    InputColumn column = CodedColumn(name, format, kDoubles, true, areOrdered);
    if (areBooleans) column.type = FieldType::kBoolean;
    AddMemory(std::move(column), codes).SetEntries(std::move(numbers));
}

void CallData::AddSamples(const std::string& name, const std::string& group, const std::vector<nb::object>& samples,
                          const std::vector<std::string>& names, bool areOrdered) {
    auto source = std::make_unique<SampleSource>(NumberColumn(name, kDoubles),
                                                 CodedColumn(group, kSampleCodes, kTexts, true, areOrdered), names);
    for (const nb::object& sample : samples) {
        const auto memory = std::make_shared<LentMemory>(sample);
        source->Add(memory->Values(), memory->Count(), memory);
    }
    sources_.push_back(std::move(source));
}

void CallData::AddRefused(const std::string& name, const std::string& what) {
    InputColumn column;
    column.name = name;
    column.format.refused = what;
    sources_.push_back(std::make_unique<MemorySource>(std::move(column), nullptr, 0, nullptr));
}

InputData CallData::Take() {
    return std::exchange(sources_, {});
}

MemorySource& CallData::AddMemory(InputColumn column, nb::handle values) {
    const auto memory = std::make_shared<LentMemory>(values);
    auto source = std::make_unique<MemorySource>(std::move(column), memory->Values(), memory->Count(), memory);
    MemorySource& added = *source;
    sources_.push_back(std::move(source));
    return added;
}

}  // namespace tarn
