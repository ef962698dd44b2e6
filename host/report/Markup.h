#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/report/TestPage.h"

namespace tarn {

/// A language in which documents are typed. Texts are escaped here and nowhere else, so that whatever a field or a
/// category is called comes out as it is.
class Markup {
 public:
    virtual ~Markup() = default;

    /// What stands before everything else; "" for nothing.
    virtual std::string Head() const { return ""; }
    virtual std::string Heading(int level, const std::string& text) const = 0;
    virtual std::string Paragraph(const std::string& text) const = 0;
    /// Lines that stand below one another. `lines` are in the language already.
    virtual std::string List(const std::vector<std::string>& lines) const = 0;
    virtual std::string Table(const PageTable& table) const = 0;
    /// A text within a line.
    virtual std::string Escaped(std::string_view text) const = 0;
    /// A figure within a line, its symbol as statistics have it.
    virtual std::string Figure(const PageFigure& figure) const = 0;
};

/// Tables of Markdown as GitHub and Pandoc read them.
class MarkdownMarkup : public Markup {
 public:
    std::string Heading(int level, const std::string& text) const override;
    std::string Paragraph(const std::string& text) const override;
    std::string List(const std::vector<std::string>& lines) const override;
    std::string Table(const PageTable& table) const override;
    std::string Escaped(std::string_view text) const override;
    std::string Figure(const PageFigure& figure) const override;
};

/// LaTeX with the package booktabs; the head says what a preamble needs.
class LatexMarkup : public Markup {
 public:
    std::string Head() const override;
    std::string Heading(int level, const std::string& text) const override;
    std::string Paragraph(const std::string& text) const override;
    std::string List(const std::vector<std::string>& lines) const override;
    std::string Table(const PageTable& table) const override;
    std::string Escaped(std::string_view text) const override;
    std::string Figure(const PageFigure& figure) const override;
};

/// Typst, from release 0.11 on.
class TypstMarkup : public Markup {
 public:
    std::string Heading(int level, const std::string& text) const override;
    std::string Paragraph(const std::string& text) const override;
    std::string List(const std::vector<std::string>& lines) const override;
    std::string Table(const PageTable& table) const override;
    std::string Escaped(std::string_view text) const override;
    std::string Figure(const PageFigure& figure) const override;
};

}  // namespace tarn
