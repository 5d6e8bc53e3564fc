#include "cli/DoctorReport.h"

#include "cli/Output.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace torvel::cli {
namespace {

using enum PreflightSeverity;

constexpr std::size_t pageWidth = 100, subjectWidth = 16, summaryWidth = 44, indent = 12;

struct Style {
    std::string_view word;    // as the page has it
    std::string_view colour;  // of a terminal
};
constexpr Style good{"ok", "1;32"};
constexpr Style styles[] = {{"note", "1;34"}, {"warning", "1;33"}, {"error", "1;31"}};

const Style& styleOf(PreflightSeverity severity) { return styles[static_cast<std::size_t>(severity)]; }

std::string padded(std::string_view text, std::size_t width) {
    std::string column(text);
    column.resize(std::max(width, text.size() + 1), ' ');
    return column;
}

// Words in lines of the page's width that all begin at the indent.
std::string wrapped(std::string_view label, const std::string& text) {
    std::string page = std::string(indent, ' ').append(label);
    const std::size_t margin = page.size();
    std::size_t column = margin;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        if (column > margin && column + 1 + end - begin > pageWidth) {
            page.append("\n").append(margin, ' ');
            column = margin;
        }
        if (column > margin) page += ' ', ++column;
        page += text.substr(begin, end - begin);
        column += end - begin;
        begin = end + 1;
    }
    return page + "\n";
}

class Page {
  public:
    explicit Page(bool coloured) : m_coloured(coloured) {}

    void subject(const PreflightSubject& subject) {
        const auto worst = std::ranges::max_element(subject.findings, {}, &PreflightFinding::severity);
        const bool isClean = worst == subject.findings.end() || worst->severity == note;
        std::string name = subject.name;
        name.front() = static_cast<char>(std::toupper(name.front()));
        m_text += painted("1", padded(name, subjectWidth)) + padded(subject.summary, summaryWidth);
        m_text += isClean ? painted(good.colour, good.word)
                          : painted(styleOf(worst->severity).colour, tally(subject.findings));
        m_text += "\n";
        for (const PreflightFinding& each : subject.findings) finding(each);
    }

    std::string finish(std::size_t errors, std::size_t warnings) && {
        return std::move(m_text) + "\n" + painted("1", sum(errors, warnings)) + "\n";
    }

  private:
    static std::string counted(std::size_t count, std::string_view noun) {
        return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
    }

    static std::string sum(std::size_t errors, std::size_t warnings) {
        if (errors == 0 && warnings == 0) return "Nothing to mend.";
        if (warnings == 0) return counted(errors, "error");
        return (errors == 0 ? "" : counted(errors, "error") + ", ") + counted(warnings, "warning");
    }

    static std::string tally(const std::vector<PreflightFinding>& findings) {
        const auto number = [&](PreflightSeverity severity) {
            return static_cast<std::size_t>(
                std::ranges::count(findings, severity, &PreflightFinding::severity));
        };
        return sum(number(error), number(warning));
    }

    void finding(const PreflightFinding& finding) {
        const Style& style = styleOf(finding.severity);
        std::string place = finding.file;
        if (finding.line != 0) place.append(":").append(std::to_string(finding.line));
        if (!finding.key.empty()) place.append(place.empty() ? "" : "  ").append(finding.key);
        m_text += "  " + painted(style.colour, padded(style.word, indent - 2)) + printable(place) + "\n";
        m_text += wrapped("", printable(finding.what));
        m_text += wrapped("then: ", printable(finding.effect));
        if (!finding.remedy.empty()) m_text += wrapped("mend: ", printable(finding.remedy));
    }

    std::string painted(std::string_view code, std::string_view text) const {
        const std::string plain(text);
        return m_coloured ? "\033[" + std::string(code) + "m" + plain + "\033[0m" : plain;
    }

    bool m_coloured;
    std::string m_text;
};

nlohmann::ordered_json jsonOf(const PreflightFinding& finding) {
    return {{"rule", finding.rule},   {"severity", rawValue(finding.severity)},
            {"file", finding.file},   {"line", finding.line},
            {"key", finding.key},     {"what", finding.what},
            {"then", finding.effect}, {"mend", finding.remedy}};
}

}  // namespace

std::size_t DoctorReport::count(PreflightSeverity severity) const {
    std::size_t total = 0;
    for (const PreflightSubject& subject : m_subjects)
        total += static_cast<std::size_t>(
            std::ranges::count(subject.findings, severity, &PreflightFinding::severity));
    return total;
}

std::string DoctorReport::text(bool coloured) const {
    Page page(coloured);
    for (const PreflightSubject& subject : m_subjects) page.subject(subject);
    return std::move(page).finish(count(error), count(warning));
}

std::string DoctorReport::json(const std::string& bundle) const {
    nlohmann::ordered_json document{{"version", 1},           {"bundle", bundle},
                                    {"errors", count(error)}, {"warnings", count(warning)},
                                    {"notes", count(note)},   {"subjects", nlohmann::ordered_json::array()}};
    for (const PreflightSubject& subject : m_subjects) {
        nlohmann::ordered_json entry{{"name", subject.name},
                                     {"summary", subject.summary},
                                     {"findings", nlohmann::ordered_json::array()}};
        for (const PreflightFinding& finding : subject.findings) entry["findings"].push_back(jsonOf(finding));
        document["subjects"].push_back(std::move(entry));
    }
    return document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace torvel::cli
