#include "gallery/Host.h"

#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/Amounts.h"
#include "TorvelLibrary/Utils/ColorUtils.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/uikit/qt/Fonts.h"
#include "TorvelPlatform/uikit/qt/QtHost.h"
#include "sample/SampleResources.h"

#include <cstdlib>
#include <fstream>

namespace torvel::gallery {
namespace {

namespace fs = std::filesystem;

bool writeFile(const fs::path& file, const std::string& bytes) {
    return static_cast<bool>(std::ofstream(file, std::ios::binary).write(bytes.data(), std::ssize(bytes)));
}

// The faces of a language; the library stops a host that forgot to register what it ships.
void registerFaces(std::string_view language) {
    for (const char* weight : {"_light", "_regular", "_medium", "_semi_bold", "_bold"})
        if (const auto file = Bundle::main().path(std::string(language) + weight, "ttf")) registerFont(*file);
}

}  // namespace

Outcome<std::unique_ptr<Host>, std::string> Host::start() {
    auto backend = sandbox::Sandbox::start();
    if (!backend) return backend.error();
    std::unique_ptr<Host> host(new Host(std::move(backend).value()));
    if (const auto fault = host->makeBundle()) return *fault;
    host->configure();
    return host;
}

Host::~Host() {
    std::error_code failed;
    fs::remove_all(m_bundle, failed);
}

std::optional<std::string> Host::makeBundle() {
    std::error_code failed;
    std::string name = (fs::temp_directory_path(failed) / "torvel-gallery-XXXXXX").string();
    if (failed || ::mkdtemp(name.data()) == nullptr)
        return "no temporary folder can be made (see TMPDIR): " + name;
    m_bundle = name;

    const fs::path resources = fs::canonical(sampleResources(), failed);
    if (failed) return "the sample host's resources are not there: " + sampleResources().string();
    for (const auto& entry : fs::directory_iterator(resources, failed))
        fs::create_symlink(entry.path(), m_bundle / entry.path().filename(), failed);
    const auto& identity = m_backend->identity();
    if (failed || !writeFile(m_bundle / "server.der", identity.serverDer) ||
        !writeFile(m_bundle / "ca.pem", identity.caPem))
        return "the temporary folder cannot be written: " + m_bundle.string();

    Bundle::setMain(m_bundle, "torvel-gallery");
    // A host's authorities are the system's; this backend made its own a moment ago.
    ::setenv("SSL_CERT_FILE", (m_bundle / "ca.pem").c_str(), 1);
    ::setenv("no_proxy", "127.0.0.1", 1);
    return std::nullopt;
}

void Host::configure() const {
    TorvelLibraryBuilder()
        .setServerURL(m_backend->url() + "/")
        .setSSlType(SSlPinningType::certificate({"server"}))
        .setEncryptionCertName("server")
        .setRequestTimeoutInterval(10)
        .build();
    LocaleHelper::doTheSwizzling();
}

void connectScreen() {
    connectToQt();
    ScreenEnvironment::widthInPoints = phoneWidth;  // the phone is the screen, whatever it stands on
}

void useLanguage(std::string_view language) {
    registerFaces(LocaleHelper::getDefaultAppLanguage());  // where a language's own are missing
    registerFaces(language);
    LocaleHelper::setAppleLanguageTo(language);
    setDefaultLocale(Locale(language == "fr" ? "fr_FR" : "en_IE"));
}

void useTheme(bool dark) {
    const auto file = Bundle::main().url(dark ? "ColorThemeDark" : "ColorTheme", "plist");
    const auto contents = file ? Utils::loadFileContents(*file) : std::nullopt;
    const auto list = contents ? PropertyList::parse(*contents) : PropertyListError{"missing"};
    const auto theme = list ? ColorDAO::from(list.value()) : list.error();
    if (theme) ColorUtils::sharedInstance().theme = theme.value();
    ScreenEnvironment::style = dark ? ScreenEnvironment::Style::dark : ScreenEnvironment::Style::light;
}

}  // namespace torvel::gallery
