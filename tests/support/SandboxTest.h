#pragma once

#include "sandbox/Sandbox.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

// Drives a sandbox by the shell, with tools that share nothing with it: curl and the openssl command line.
namespace torvel::sandbox {

struct Ran {
    int exit;
    std::string out;
};

inline Ran shell(const std::string& command) {
    std::FILE* pipe = popen(command.c_str(), "r");
    Ran ran{-1, ""};
    std::array<char, 4096> buffer{};
    for (std::size_t got; (got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        ran.out.append(buffer.data(), got);
    ran.exit = WEXITSTATUS(pclose(pipe));
    return ran;
}

// Commands find $URL, $CA, $DIR (the written identity), and $TOKEN once logged in.
struct SandboxTest : ::testing::Test {
    ~SandboxTest() override { std::filesystem::remove_all(m_directory); }

    void start(SandboxOptions options = {}) {
        auto started = Sandbox::start(std::move(options));
        ASSERT_TRUE(started) << started.error();
        m_sandbox = std::move(started.value());
        ASSERT_EQ(m_sandbox->identity().write(m_directory), std::nullopt);
        setenv("URL", m_sandbox->url().c_str(), 1);
        setenv("PORT", std::to_string(m_sandbox->port()).c_str(), 1);
        setenv("DIR", m_directory.c_str(), 1);
        setenv("CA", (m_directory / "ca.pem").c_str(), 1);
    }

    // The token is cut out of the answer by sed, as a script would.
    void logIn() {
        const Ran ran =
            shell(R"(curl -s --cacert "$CA" "$URL/api/v1/login" -d '{"msisdn":"0700000001","pin":"4321"}' )"
                  R"sh(| sed -n 's/.*"token":"\([0-9a-f]*\)".*/\1/p' | tr -d '\n')sh");
        ASSERT_EQ(ran.out.size(), 32U);
        setenv("TOKEN", ran.out.c_str(), 1);
    }

    // `arguments` are shell text; the status code stands on the last line of the output.
    static Ran curl(const std::string& arguments) {
        return shell(R"(curl -s --max-time 20 --cacert "$CA" -H "Authorization: Bearer $TOKEN" )"
                     R"(-w '\n%{http_code}' )" +
                     arguments);
    }

    const std::filesystem::path m_directory =
        std::filesystem::temp_directory_path() / ("sandbox_tests_" + std::to_string(getpid()));
    std::unique_ptr<Sandbox> m_sandbox;
};

struct Row {
    const char *name, *arguments;
    int exit;  // curl's own codes: 0 fine, 18 partial body, 47 redirects, 52 nothing, 56 receive, 60 CA, 61
               // coding
    const char* output;  // a regular expression
};

inline void expectRows(const std::vector<Row>& rows, const std::function<Ran(const std::string&)>& run) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Ran ran = run(row.arguments);
        EXPECT_EQ(ran.exit, row.exit);
        EXPECT_THAT(ran.out, ::testing::ContainsRegex(row.output));
    }
}

}  // namespace torvel::sandbox
