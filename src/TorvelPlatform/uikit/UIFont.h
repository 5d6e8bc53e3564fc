#pragma once

#include <string>
#include <utility>

namespace torvel {

// A font: the PostScript name of a face, and a size that stays exactly the double that was given. A value;
// it says nothing of whether the face is there (uikit/qt/Fonts.h does). Safe from any thread.
class UIFont {
  public:
    // A face at a size in points.
    UIFont(std::string fontName, double pointSize)
        : m_fontName(std::move(fontName)), m_pointSize(pointSize) {}

    // The PostScript name of the face ("Poppins-SemiBold").
    const std::string& fontName() const { return m_fontName; }
    // The size in points.
    double pointSize() const { return m_pointSize; }
    // The same face at another size in points.
    UIFont withSize(double pointSize) const { return {m_fontName, pointSize}; }

    // The same face at exactly the same size.
    bool operator==(const UIFont&) const = default;

  private:
    std::string m_fontName;
    double m_pointSize;
};

}  // namespace torvel
