#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/stl/detail/nb_list.h>

#include <string>
#include <string_view>
#include <vector>

// Texts and lists as arguments, in place of <nanobind/stl/string.h> and <nanobind/stl/vector.h>. Those make them while
// the argument is looked at, where nothing can be thrown: no memory for a copy ends the process. Here an argument is
// looked at first and copied when the function is called, where that becomes a MemoryError.

namespace nanobind::detail {

template <>
struct type_caster<std::string> {
    static constexpr auto Name = const_name("str");
    template <typename>
    using Cast = std::string;

    template <typename>
    static constexpr bool can_cast() {
        return true;
    }

    bool from_python(handle source, std::uint32_t, cleanup_list*) noexcept {
        if (!PyUnicode_Check(source.ptr())) return false;
        Py_ssize_t size = 0;
        const char* const text = PyUnicode_AsUTF8AndSize(source.ptr(), &size);
        if (text == nullptr) {
            PyErr_Clear();
            return false;
        }
        text_ = {text, static_cast<std::size_t>(size)};
        return true;
    }

    static handle from_cpp(const std::string& text, rv_policy, cleanup_list*) noexcept {
        return PyUnicode_FromStringAndSize(text.data(), static_cast<Py_ssize_t>(text.size()));
    }

    explicit operator std::string() const { return std::string(text_); }

 private:
    std::string_view text_;  // within the object, which the caller holds
};

template <typename Entry>
struct type_caster<std::vector<Entry>> : list_caster<std::vector<Entry>, Entry> {
    template <typename>
    using Cast = std::vector<Entry>;

    bool from_python(handle source, std::uint32_t, cleanup_list*) noexcept {
        source_ = source;
        return PySequence_Check(source.ptr()) != 0 && !PyUnicode_Check(source.ptr());
    }

    explicit operator std::vector<Entry>() const {
        const Py_ssize_t count = PySequence_Size(source_.ptr());
        if (count < 0) throw python_error();
        std::vector<Entry> list;
        list.reserve(static_cast<std::size_t>(count));
        for (Py_ssize_t i = 0; i < count; ++i) {
            const object entry = steal(PySequence_GetItem(source_.ptr(), i));
            if (!entry.is_valid()) throw python_error();
            make_caster<Entry> caster;
            // What is no such list fits no function, as any other argument of a wrong type.
            if (!caster.from_python(entry, 0, nullptr) || !caster.template can_cast<Entry>()) throw next_overload();
            list.push_back(caster.operator cast_t<Entry>());
        }
        return list;
    }

 private:
    handle source_;  // which the caller holds
};

}  // namespace nanobind::detail
