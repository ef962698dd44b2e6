#include "host/table/ForeignFormat.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "host/InputError.h"

namespace tarn {

namespace {

constexpr std::size_t kLookedAt = 512;

constexpr const char* kExport = "export it as CSV";
constexpr const char* kUnpack = "unpack it first";

struct Format {
    std::string_view beginning;
    const char* name;
    const char* advice;
};

constexpr Format kFormats[] = {
    {"PAR1", "a Parquet file", kExport},
    {"ARROW1", "an Arrow file", kExport},
    {"\xff\xff\xff\xff", "an Arrow stream", kExport},
    {"\xd0\xcf\x11\xe0", "a spreadsheet or document of an office program", kExport},
    {"SQLite format 3", "a database", "export its table as CSV"},
    {"\x89HDF", "an HDF5 file", kExport},
    {"\x93NUMPY", "an array of NumPy", kExport},
    {"RDX", "data of R", "write it with write.csv"},
    {"RDA", "data of R", "write it with write.csv"},
    {"%PDF", "a PDF document", kExport},
    {"{\\rtf", "a document of a word processor", kExport},
    {"BZh", "compressed by bzip2", kUnpack},
    {"\xfd"
     "7zXZ",
     "compressed by xz", kUnpack},
    {"7z\xbc\xaf", "a 7z archive", kUnpack},
    {"Rar!", "a RAR archive", kUnpack},
};

[[noreturn]] void Refuse(const std::string& name, const std::string& what, const char* advice) {
    throw InputError(name + ": " + what + "; expected a table as text: " + advice);
}

bool Has(std::string_view bytes, std::string_view part) {
    return bytes.find(part) != std::string_view::npos;
}

void RefuseArchive(const std::string& name, std::string_view bytes) {
    if (bytes.starts_with("PK\x03\x04")) {
        const bool isSpreadsheet = Has(bytes, "[Content_Types].xml") || Has(bytes, "_rels/") || Has(bytes, "xl/") ||
                                   Has(bytes, "opendocument");
        if (isSpreadsheet) Refuse(name, "a spreadsheet, not its text", kExport);
        Refuse(name, "a zip archive", kUnpack);
    }
    constexpr std::size_t kTapeMark = 257;
    if (bytes.size() > kTapeMark && bytes.substr(kTapeMark).starts_with("ustar")) {
        Refuse(name, "a tar archive", kUnpack);
    }
}

std::string Lowered(std::string_view text) {
    std::string lowered(text);
    std::ranges::transform(lowered, lowered.begin(), [](unsigned char c) { return std::tolower(c); });
    return lowered;
}

/// Texts that are no tables of delimited values. A header may begin with a bracket: "[id],[score]".
void RefuseMarkup(const std::string& name, std::string_view bytes) {
    constexpr std::string_view kBlanks = " \t\r\n";
    if (bytes.starts_with("\xef\xbb\xbf")) bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of(kBlanks), bytes.size()));
    const std::string text = Lowered(bytes);
    for (const std::string_view mark : {"<!doctype html", "<html", "<table", "<head", "<body"}) {
        if (text.starts_with(mark)) Refuse(name, "an HTML page", kExport);
    }
    if (text.starts_with("<?xml")) Refuse(name, "an XML document", kExport);
    if (text.size() < 2 || (text.front() != '{' && text.front() != '[')) return;
    const std::size_t next = text.find_first_not_of(kBlanks, 1);
    if (next == std::string::npos) return;
    const bool isObject = text.front() == '{' && (text[next] == '"' || text[next] == '}');
    const bool isList = text.front() == '[' && (text[next] == '{' || text[next] == '[' || text[next] == ']' ||
                                                std::isdigit(static_cast<unsigned char>(text[next])) != 0);
    if (isObject || isList) Refuse(name, "JSON", kExport);
}

}  // namespace

void RefuseForeignFormat(const std::string& name, std::string_view firstBytes) {
    const std::string_view bytes = firstBytes.substr(0, kLookedAt);
    for (const Format& format : kFormats) {
        if (bytes.starts_with(format.beginning)) Refuse(name, format.name, format.advice);
    }
    RefuseArchive(name, bytes);
    RefuseMarkup(name, bytes);
    // A text has no NUL bytes. In UTF-16 every other byte is one at least, and a mark says so.
    const bool isUtf16 = bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff");
    const auto nulCount = static_cast<std::size_t>(std::ranges::count(bytes, '\0'));
    if (isUtf16 || nulCount == 0) return;
    const auto isNulAt = [&](std::size_t parity) {
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            if (bytes[i + parity] != '\0') return false;
        }
        return true;
    };
    if (bytes.size() >= 2 && nulCount < bytes.size() && (isNulAt(0) || isNulAt(1)))
        return;  // UTF-16 without a mark, of which the reader tells
    Refuse(name, "binary data", kExport);
}

}  // namespace tarn
