#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "machine/CopiedVariant.h"

namespace tarn {

/// A JSON value isn't of the kind that it is taken for.
class JsonError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// A JSON value (RFC 8259) whose objects keep their keys in the order written.
///
/// It never takes memory to give memory back: where memory is gone for good, what was read or built still goes away.
/// That is what a tree of our own is for; the names of its operations are those that C++ programmers know from others.
/// The destructor goes down by recursion, so values are no deeper than `ReadJson` lets them be.
class Json {
 public:
    enum class value_t { null, boolean, number_integer, number_unsigned, number_float, string, array, object };

    /// A member of an object.
    struct Member;
    using Array = std::vector<Json>;
    using Object = std::vector<Member>;

    /// A value within braces. It may be taken out, so that what is built from the inside out is never copied.
    class Part;
    using Parts = std::initializer_list<Part>;

    /// Forward over the elements of an array or the values of an object; of anything else there are none.
    template <typename Value>
    class Iterator {
     public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Json;
        using difference_type = std::ptrdiff_t;
        using pointer = Value*;
        using reference = Value&;

        Iterator() = default;
        Iterator(Value* whole, std::size_t place) : whole_(whole), place_(place) {}

        Value& operator*() const { return whole_->At(place_); }
        Value* operator->() const { return &whole_->At(place_); }
        /// The key of the value, which stands in an object.
        const std::string& key() const { return whole_->KeyAt(place_); }

        Iterator& operator++() {
            ++place_;
            return *this;
        }
        Iterator operator++(int) {
            Iterator before = *this;
            ++place_;
            return before;
        }
        bool operator==(const Iterator&) const = default;

     private:
        Value* whole_ = nullptr;
        std::size_t place_ = 0;
    };
    using iterator = Iterator<Json>;
    using const_iterator = Iterator<const Json>;

    // What makes, copies or destroys a value stands below the class, where its members are known.
    Json();
    Json(const Json& other);
    Json(Json&&) noexcept;
    Json& operator=(const Json& other);
    Json& operator=(Json&&) noexcept;
    ~Json();
    Json(std::nullptr_t);
    Json(const char* text);
    Json(std::string text);
    Json(std::string_view text);
    template <typename Number>
    requires std::is_arithmetic_v<Number> Json(Number number);
    template <typename Element>
    requires std::is_constructible_v<Json, const Element&> Json(const std::vector<Element>& elements);
    /// An object, if each part is a pair of a text and a value; otherwise an array.
    Json(Parts parts);

    static Json array();
    /// An array of these parts, also where they look like the members of an object.
    static Json array(Parts parts);
    static Json object();

    value_t type() const { return static_cast<value_t>(value_.index()); }
    /// "number", "object" and so on.
    const char* type_name() const;
    bool is_null() const { return type() == value_t::null; }
    bool is_boolean() const { return type() == value_t::boolean; }
    bool is_number() const { return type() >= value_t::number_integer && type() <= value_t::number_float; }
    /// Whether it is a whole number, of either sign.
    bool is_number_integer() const { return is_number() && type() != value_t::number_float; }
    /// Whether it is a whole number that was read, or made of a type, without a sign.
    bool is_number_unsigned() const { return type() == value_t::number_unsigned; }
    bool is_string() const { return type() == value_t::string; }
    bool is_array() const { return type() == value_t::array; }
    bool is_object() const { return type() == value_t::object; }
    bool is_structured() const { return is_array() || is_object(); }
    bool is_primitive() const { return !is_structured(); }

    /// The value as a bool, a number, a text or a list of these. Throws a `JsonError` if it is none.
    template <typename Value>
    Value get() const {
        if constexpr (std::is_same_v<Value, bool>) {
            return Held<bool>();
        } else if constexpr (std::is_same_v<Value, std::string>) {
            return Text();
        } else if constexpr (std::is_arithmetic_v<Value>) {
            return NumberAs<Value>();
        } else {
            Value list;
            for (const Json& element : Held<Array>()) list.push_back(element.get<typename Value::value_type>());
            return list;
        }
    }
    /// The text itself. Throws a `JsonError` if it is none.
    const std::string& Text() const { return Held<std::string>(); }

    /// The number of elements or members; of anything else there are none.
    std::size_t size() const;
    bool empty() const { return size() == 0; }
    iterator begin() { return {this, 0}; }
    iterator end() { return {this, size()}; }
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, size()}; }

    /// The members of an object, each of which can be taken apart as [key, value]. Throws a `JsonError` if it is none;
    /// null is like an object without members.
    const Object& items() const;
    Object& items();

    /// The member of that key; `end()` if there is none, or this is no object.
    const_iterator find(std::string_view key) const { return {this, PlaceOf(key)}; }
    iterator find(std::string_view key) { return {this, PlaceOf(key)}; }
    bool contains(std::string_view key) const { return PlaceOf(key) != size(); }
    /// The member of that key, which is there. Throws a `JsonError` otherwise.
    const Json& operator[](std::string_view key) const;
    const Json& operator[](const char* key) const { return (*this)[std::string_view(key)]; }
    /// The member of that key, which is added as null where there is none. Null becomes an object.
    Json& operator[](std::string_view key);
    Json& operator[](const char* key) { return (*this)[std::string_view(key)]; }
    /// The element at that place, which is there.
    template <std::integral Place>
    const Json& operator[](Place place) const {
        return At(static_cast<std::size_t>(place));
    }
    template <std::integral Place>
    Json& operator[](Place place) {
        return At(static_cast<std::size_t>(place));
    }

    /// Adds an element to an array. Null becomes an array.
    void push_back(Json element);
    /// The last element of an array, which has one.
    Json& back() { return Held<Array>().back(); }
    /// Takes all members of another object; a key that is there already gets the new value.
    void update(Json other);

    /// As text, in one line or with so many blanks for each level. What is no UTF-8 becomes U+FFFD, byte by byte; a
    /// number that JSON doesn't have becomes null.
    std::string dump(int indent = -1) const;

    /// Numbers are equal by their value.
    bool operator==(const Json& other) const;

 private:
    using Value = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Array, Object>;

    explicit Json(Array elements);

    template <typename Number>
    static auto Widened(Number number) {
        if constexpr (std::is_same_v<Number, bool>) {
            return number;
        } else if constexpr (std::is_floating_point_v<Number>) {
            return static_cast<double>(number);
        } else if constexpr (std::is_signed_v<Number>) {
            return static_cast<std::int64_t>(number);
        } else {
            return static_cast<std::uint64_t>(number);
        }
    }

    template <typename Number>
    Number NumberAs() const {
        if (const auto* const whole = std::get_if<std::int64_t>(&value_)) return static_cast<Number>(*whole);
        if (const auto* const whole = std::get_if<std::uint64_t>(&value_)) return static_cast<Number>(*whole);
        if (const auto* const real = std::get_if<double>(&value_)) return static_cast<Number>(*real);
        ThrowOtherThan("number");
    }

    template <typename Kind>
    const Kind& Held() const {
        if (const Kind* const held = std::get_if<Kind>(&value_)) return *held;
        ThrowOtherThan(std::is_same_v<Kind, bool>          ? "boolean"
                       : std::is_same_v<Kind, std::string> ? "string"
                       : std::is_same_v<Kind, Array>       ? "array"
                                                           : "object");
    }
    template <typename Kind>
    Kind& Held() {
        return const_cast<Kind&>(std::as_const(*this).Held<Kind>());
    }

    [[noreturn]] void ThrowOtherThan(const char* expected) const;
    const Json& At(std::size_t place) const;
    Json& At(std::size_t place) { return const_cast<Json&>(std::as_const(*this).At(place)); }
    const std::string& KeyAt(std::size_t place) const;
    /// Where the member of that key stands; behind the last one if there is none.
    std::size_t PlaceOf(std::string_view key) const;

    friend class JsonText;

    Value value_;
};

struct Json::Member {
    std::string name;
    Json value;

    bool operator==(const Member&) const = default;
};

inline Json::Json() = default;
inline Json::Json(const Json& other) : value_(CopiedVariant(other.value_)) {}
inline Json::Json(Json&&) noexcept = default;
inline Json& Json::operator=(const Json& other) {
    return *this = Json(other);
}
inline Json& Json::operator=(Json&&) noexcept = default;
inline Json::~Json() = default;
inline Json::Json(std::nullptr_t) {}
inline Json::Json(const char* text) : value_(std::string(text)) {}
inline Json::Json(std::string text) : value_(std::move(text)) {}
inline Json::Json(std::string_view text) : value_(std::string(text)) {}
inline Json::Json(Array elements) : value_(std::move(elements)) {}

template <typename Number>
requires std::is_arithmetic_v<Number> Json::Json(Number number) : value_(Widened(number)) {}

template <typename Element>
requires std::is_constructible_v<Json, const Element&> Json::Json(const std::vector<Element>& elements)
    : value_(Array(elements.begin(), elements.end())) {}

inline Json Json::array() {
    return Json(Array());
}

class Json::Part {
 public:
    template <typename Value>
    requires(std::is_constructible_v<Json, Value> && !std::is_same_v<std::remove_cvref_t<Value>, Part>)
        Part(Value&& value)  // NOLINT(bugprone-forwarding-reference-overload): another part is none of these
        : value_(std::forward<Value>(value)) {}
    Part(Parts parts) : value_(parts) {}

    const Json& Seen() const { return value_; }
    Json Taken() const { return std::move(value_); }

 private:
    mutable Json value_;  // a list within braces is constant, its parts are nobody else's
};

}  // namespace tarn
