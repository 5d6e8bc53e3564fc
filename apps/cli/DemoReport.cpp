#include "cli/DemoReport.h"

#include "cli/Output.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <nlohmann/json.hpp>

namespace torvel::cli {
namespace {

constexpr char bold[] = "1", dim[] = "2", green[] = "1;32", red[] = "1;31";

std::string padded(std::string_view text, std::size_t width) {
    std::string column(text);
    column.resize(std::max(width, text.size()), ' ');
    return column;
}

// Of a long text, base64 mostly, its beginning and its size.
std::string shortened(const std::string& text) {
    constexpr std::size_t kept = 40, fitting = 60;
    if (text.size() <= fitting) return text;
    return text.substr(0, kept) + "... " + std::to_string(text.size()) + " characters";
}

std::string duration(double milliseconds) {
    char text[32];
    std::snprintf(text, sizeof text, milliseconds < 10 ? "%.1f ms" : "%.0f ms", milliseconds);
    return text;
}

}  // namespace

DemoReport::DemoReport() : m_colour(resultsOnTerminal() && std::getenv("NO_COLOR") == nullptr) {}

std::string DemoReport::coloured(const char* code, std::string_view text) const {
    const std::string plain(text);
    return m_colour ? "\033[" + std::string(code) + "m" + plain + "\033[0m" : plain;
}

void DemoReport::heading(std::string_view text) const { writeResult(coloured(bold, text) + "\n"); }

void DemoReport::beginStep(std::string_view title) {
    m_fault.clear();
    writeResult("\n");
    heading(std::to_string(++m_steps) + ". " + std::string(title));
}

void DemoReport::fact(std::string_view label, std::string_view text) const {
    writeResult("   " + coloured(dim, padded(label, 10)) + std::string(text) + "\n");
}

void DemoReport::members(std::string_view label, const std::string& json) const {
    const auto object = nlohmann::ordered_json::parse(json, nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) return fact(label, json);
    for (const auto& [name, value] : object.items()) {
        fact(label,
             padded(name, 16) + (value.is_string() ? shortened(value.get<std::string>()) : value.dump()));
        label = "";
    }
}

void DemoReport::expect(bool held, std::string_view what) {
    if (!held && m_fault.empty()) m_fault = what;
}

void DemoReport::endStep(const Seen& seen) {
    const bool good = m_fault.empty();
    m_good += good ? 1 : 0;
    std::string ending = (seen.callback.empty() ? "no callback" : seen.callback) + " after ";
    ending += duration(seen.milliseconds);
    if (!good) ending += "; expected: " + m_fault + ". " + seen.message;
    writeResult("   " + coloured(good ? green : red, padded(good ? "ok" : "FAILED", 10)) + ending + "\n");
}

bool DemoReport::finish() const {
    const bool good = m_good == m_steps;
    const std::string line =
        "demo: " + std::to_string(m_good) + " of " + std::to_string(m_steps) + " steps ok";
    return writeResult("\n" + coloured(good ? green : red, line) + "\n") && good;
}

}  // namespace torvel::cli
