#pragma once

#include "TorvelPlatform/foundation/Outcome.h"
#include "sandbox/Sandbox.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace torvel::gallery {

// The host application under its screens: a main bundle in a temporary folder (the sample host's resources
// and the backend's certificate), the backend, and the library configured for both.
class Host {
  public:
    // The error is one line. Needs no QApplication.
    static Outcome<std::unique_ptr<Host>, std::string> start();
    ~Host();

    const sandbox::Sandbox& backend() const { return *m_backend; }

  private:
    explicit Host(std::unique_ptr<sandbox::Sandbox> backend) : m_backend(std::move(backend)) {}
    std::optional<std::string> makeBundle();
    void configure() const;

    std::unique_ptr<sandbox::Sandbox> m_backend;
    std::filesystem::path m_bundle;
};

// Connects the library to the QApplication, for a screen as wide as the phone.
void connectScreen();

// Makes a language the one in force, with the faces that it is written in and the locale of its amounts.
void useLanguage(std::string_view language);
// Makes the light or the dark theme of the main bundle the one in force.
void useTheme(bool dark);

inline constexpr int phoneWidth = 390;
inline constexpr int phoneHeight = 844;

}  // namespace torvel::gallery
