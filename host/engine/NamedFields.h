#pragma once

#include <cstddef>
#include <string>
#include <unordered_set>

#include "host/Json.h"

namespace tarn {

/// The fields that a plan or a request names, under whatever key. Nobody reads the numbers of others.
class NamedFields {
 public:
    NamedFields() = default;
    /// Those that are named anywhere in a document.
    explicit NamedFields(const Json& document) { AddTexts(document); }

    void Add(const std::string& name) { names_.insert(name); }
    /// One that a user typed: without regard to case, and maybe a pattern of names, which means any field.
    void AddLike(const std::string& name);
    /// Whether the field of that name at that place of the table, from 0, may be read. Some are although they are not
    /// named: those that are called as a number or a truth value is written, which is a text, too, to whoever asks for
    /// one; and the first two, whose descriptives come into a document with every sign test.
    bool MayMean(const std::string& field, std::size_t place) const;

 private:
    void AddTexts(const Json& value);

    std::unordered_set<std::string> names_;
    std::unordered_set<std::string> likeNames_;  // in small letters
    bool isAny_ = false;
};

}  // namespace tarn
