#include "Bench.h"
#include "BenchFiles.h"
#include "NetworkServers.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// Whole processes. Their time is the processor's: while one runs, from its start on, it never waits but for
// the server, whose time counts too.
namespace torvel::bench {
namespace {

// The programs stand in a folder beside that of this one.
std::string program(const char* name) {
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    return (folder.parent_path() / "startup-programs" / name).string();
}

Side starting(std::vector<std::string> arguments) {
    return repeating([arguments = std::move(arguments)]() mutable {
        std::vector<char*> pointers;
        for (std::string& argument : arguments) pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t quiet;  // the toolkit warns of what it has no display for
        posix_spawn_file_actions_init(&quiet);
        posix_spawn_file_actions_addopen(&quiet, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        pid_t pid = 0;
        int status = 0;
        if (posix_spawn(&pid, pointers[0], &quiet, nullptr, pointers.data(), environ) != 0 ||
            waitpid(pid, &status, 0) != pid || status != 0)
            giveUp(arguments[0] + " failed");
        posix_spawn_file_actions_destroy(&quiet);
    });
}

double childrenSeconds() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto inSeconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return inSeconds(usage.ru_utime) + inSeconds(usage.ru_stime);
}

struct Program {
    const char* name;
    Side start;
};

// Ours, the peer and what is shown beside them.
void compare(Report& report, const std::string& name, const std::vector<Program>& programs, double bound,
             const std::function<double()>& clock) {
    std::vector<Side> sides;
    for (const Program& program : programs) sides.push_back(program.start);
    const Rounds rounds = takeTurns(sides, {.rounds = 21, .turn = 0.03, .ownClock = clock});
    for (std::size_t i = 0; i < programs.size(); ++i) report.time(name, programs[i].name, rounds.time(i));
    report.atMost(name, rounds.ratio(0, 1), bound);
}

void fillMainBundle(const Folder& folder) {
    folder.write("EndpointsConfig.plist",
                 "<plist version=\"1.0\"><dict><key>login</key><string>v1/login</string></dict></plist>");
    folder.write("en.lproj/Localizable.strings", "\"greeting\" = \"Hello\";\n");
    folder.write("en.lproj/Configurations.strings", "\"torvel_pin_length\" = \"5\";\n");
    setenv("TORVEL_MAIN_BUNDLE", folder.path().c_str(), 1);
}

std::string textOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The machine's certificates in both of their forms, with the server's authority among them.
void gatherCertificates(const Folder& folder) {
    const std::filesystem::path system = "/etc/ssl/certs";
    folder.write("bundle.pem", textOf(system / "ca-certificates.crt") + textOf(folder / "ca.pem"));
    std::filesystem::create_directory(folder / "certs");
    for (const auto& entry : std::filesystem::directory_iterator(system))
        if (entry.path().extension() == ".0")
            std::filesystem::create_symlink(entry.path(), folder / "certs" / entry.path().filename());
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen((folder / "ca.pem").c_str(), "r"),
                                                               std::fclose);
    const std::unique_ptr<X509, void (*)(X509*)> authority(
        PEM_read_X509(file.get(), nullptr, nullptr, nullptr), X509_free);
    char hash[16];
    std::snprintf(hash, sizeof hash, "%08lx.0", X509_subject_name_hash(authority.get()));
    std::filesystem::create_symlink(folder / "ca.pem", folder / "certs" / hash);
}

void measureFirstAnswer(Report& report, const Folder& folder) {
    const Nginx nginx(folder);
    gatherCertificates(folder);
    const std::string url = nginx.https() + "/", certificates = (folder / "certs").string();
    unsetenv("SSL_CERT_FILE");  // the folder is the default, as it is where nothing is set
    setenv("SSL_CERT_DIR", certificates.c_str(), 1);
    const std::string bundle = (folder / "bundle.pem").string();
    compare(report, "first-https-answer-over-libcurl",
            {{"torvel", starting({program("host"), url})},
             {"libcurl", starting({program("curl"), url, bundle, certificates})},
             {"libcurl-without-the-bundle", starting({program("curl"), url, "", certificates})},
             {"the-same-with-our-libraries", starting({program("curl-bare"), url, "", certificates})}},
            0.40, [&] { return childrenSeconds() + nginx.seconds(); });
}

void measureSize(Report& report) {
    const auto size = static_cast<double>(std::filesystem::file_size(program("libtorvel.so")));
    report.atMost("stripped-core-megabytes", size / 1e6, 1);
}

}  // namespace
}  // namespace torvel::bench

int main() {
    using namespace torvel::bench;
    runOnProcessor(0);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const Folder folder;
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    fillMainBundle(folder);

    Report report("startup");
    compare(report, "headless-over-loading",
            {{"torvel", starting({program("host")})}, {"loading", starting({program("bare")})}}, 1.5,
            childrenSeconds);
    compare(report, "window-over-empty-qt",
            {{"torvel", starting({program("window")})},
             {"qt", starting({program("window-qt")})},
             {"qt-with-our-libraries", starting({program("window-bare")})}},
            1.3, childrenSeconds);
    measureFirstAnswer(report, folder);
    measureSize(report);
    return report.exitCode();
}
