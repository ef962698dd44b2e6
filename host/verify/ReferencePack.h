#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "host/Json.h"
#include "host/report/ResultDocument.h"
#include "host/verify/PrintedNumber.h"

namespace tarn {

// Published results with the data that they were made from. share/reference/README.md says what the files hold.

inline constexpr const char* kPublishedFormat = "tarn-reference-1";

/// Where the numbers of a case are from: a table or an example in print; what a package documents of itself; all
/// arrangements gone through; worked out by hand or by other software with the call that is named.
inline constexpr std::array<std::string_view, 4> kKindsOfSource{"print", "package", "enumeration", "computation"};

/// One number of a source.
struct Expectation {
    std::string quantity;  ///< what of a test it is, as `QuantityOf` reads it
    std::string of;        ///< which set, pair, sample, effect or figure, where there are several; "" otherwise
    PrintedNumber printed;
    std::string source;  ///< where it is printed, if not where the case says; "" for the case's
    /// Why the printed number isn't what it should be, and what it should be; "" where it is right.
    std::string differs;
    PrintedNumber right;
    PrintedNumber
        asDefined;  ///< what it is in the engine's fixed widths, where that is another number; no text otherwise

    bool Differs() const { return !differs.empty(); }
    /// What ours has to agree with.
    const PrintedNumber& Wanted(ArithmeticMode arithmetic) const {
        if (arithmetic == ArithmeticMode::kAsDefined && !asDefined.text.empty()) return asDefined;
        return Differs() ? right : printed;
    }
    /// "p exact of OJ - VC"
    std::string Name() const { return of.empty() ? quantity : quantity + " of " + of; }
};

/// One column of the data of a case; the cells as texts, "" for a missing one.
struct ReferenceColumn {
    std::string name;
    std::vector<std::string> cells;
};

struct ReferenceCase {
    std::string name;   ///< unique in the pack
    std::string test;   ///< as in the document: "IMannWhitneyU"
    std::string title;  ///< what the data are
    std::string kind;   ///< where its numbers are from: one of `kKindsOfSource`
    std::string source;
    std::string note;  ///< what a reader should know of it, such as another convention; mostly ""
    std::vector<ReferenceColumn> columns;
    std::vector<std::string> request;  ///< what is typed behind the table of `tarn analyze`
    std::vector<Expectation> expectations;

    /// The data as comma-separated values.
    std::string Csv() const;
};

struct ReferencePack {
    std::vector<ReferenceCase> cases;

    /// The cases that a user means by a name: the one of it, or all of the test that has it. Throws an `InputError` for
    /// a name that none has.
    std::vector<const ReferenceCase*> Named(const std::string& name) const;
};

/// Reads all published results of a folder, those of its files "*.json" in the order of their names. Throws an
/// `InputError` with file and key for what isn't as it should be, and for a folder without any.
ReferencePack ReadReferencePack(const std::string& folder);

/// The files "*.json" of a folder, in the order of their names. Throws an `InputError` where there are none.
std::vector<std::string> JsonFilesIn(const std::string& folder);

}  // namespace tarn
