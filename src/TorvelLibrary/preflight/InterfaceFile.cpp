#include "TorvelLibrary/preflight/InterfaceFile.h"

#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/Text.h"

#include <algorithm>

namespace torvel::preflight {
namespace {

constexpr std::string_view imageElements[] = {"pixmap",      "iconset",   "normaloff",   "normalon",
                                              "activeoff",   "activeon",  "disabledoff", "disabledon",
                                              "selectedoff", "selectedon"};

std::string decoded(std::string_view markup) {
    std::string text(CharacterSet::whitespacesAndNewlines().trimming(markup));
    constexpr std::pair<std::string_view, std::string_view> entities[] = {
        {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}};
    for (const auto& [entity, character] : entities) text = replacingOccurrences(text, entity, character);
    return text;
}

// Whether anyone would translate it: more than signs and figures.
bool hasLetters(std::string_view text) {
    return std::ranges::any_of(text, [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }) ||
           std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

class Scanner {
  public:
    Scanner(std::string_view content, InterfaceFile& file) : m_content(content), m_file(file) {}

    void scan() {
        for (std::size_t open = find('<', 0); open != npos; open = find('<', m_position)) {
            m_line += static_cast<int>(std::count(at(m_position), at(open), '\n'));
            m_position = open + 1;
            if (m_content.substr(open).starts_with("<!--"))
                skipTo(m_content.find("-->", open));
            else
                element(open);
        }
    }

  private:
    static constexpr std::size_t npos = std::string_view::npos;

    std::size_t find(char c, std::size_t from) const { return m_content.find(c, from); }
    const char* at(std::size_t position) const { return m_content.data() + position; }

    void skipTo(std::size_t position) {
        const std::size_t end = std::min(position, m_content.size());
        m_line += static_cast<int>(std::count(at(m_position), at(end), '\n'));
        m_position = end;
    }

    void element(std::size_t open) {
        const std::size_t close = std::min(find('>', open), m_content.size() - 1);
        const std::string_view tag = m_content.substr(open + 1, close - open - 1);
        const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/"));
        const std::size_t end = std::min(find('<', close), m_content.size());
        if (name == "ui") m_file.isOne = true;
        if (!tag.ends_with('/')) item(name, tag, decoded(m_content.substr(close + 1, end - close - 1)));
    }

    void item(std::string_view name, std::string_view tag, std::string text) {
        if (name == "string" && hasLetters(text) && tag.find("notr=\"true\"") == npos)
            m_file.texts.push_back({std::move(text), m_line});
        else if (std::ranges::count(imageElements, name) > 0 && !text.empty() && !text.starts_with(":/"))
            m_file.images.push_back({std::move(text), m_line});
    }

    std::string_view m_content;
    InterfaceFile& m_file;
    std::size_t m_position = 0;
    int m_line = 1;  // of the position
};

}  // namespace

InterfaceFile InterfaceFile::parse(std::string name, std::string_view content) {
    InterfaceFile file;
    file.name = std::move(name);
    Scanner(content, file).scan();
    return file;
}

std::vector<InterfaceFile> interfaceFiles(const Host& host) {
    std::vector<std::filesystem::path> folders{host.bundle.directory()};
    for (const std::string& language : host.languages())
        folders.push_back(folders[0] / (language + ".lproj"));
    std::vector<InterfaceFile> files;
    for (const auto& folder : folders) {
        for (const auto& path : host.files(folder, ".ui")) {
            if (const auto bytes = readFile(path.native()))
                files.push_back(InterfaceFile::parse(host.nameOf(path), bytes.value().raw()));
        }
    }
    return files;
}

}  // namespace torvel::preflight
