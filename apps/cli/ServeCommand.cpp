#include "cli/Command.h"
#include "cli/Output.h"
#include "sandbox/Sandbox.h"

#include <csignal>

namespace torvel::cli {
namespace {

constexpr Option options[] = {
    {"--dir", "DIR", "where its certificates go; made when absent", Occurs::once},
    {"--port", "N", "the port on 127.0.0.1; the system chooses one by default", Occurs::atMostOnce,
     checkPort},
    {"--flavour", "NAME", "the form of sealed answers where the request leaves it open (VelmMoney)",
     Occurs::atMostOnce, checkFlavour},
};

int serve(const Arguments& arguments) {
    // Blocked before the server's threads start, so that the signals wait for sigwait below.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);

    sandbox::SandboxOptions wanted;
    wanted.port = static_cast<std::uint16_t>(arguments.number("--port", 0));
    wanted.flavour = arguments.text("--flavour", wanted.flavour);
    const auto server = sandbox::Sandbox::start(std::move(wanted));
    if (!server) return arguments.failed(server.error());
    if (const auto fault = server.value()->identity().write(arguments.text("--dir", "")))
        return arguments.failed(*fault);
    if (!writeResult("listening on " + server.value()->url() + "\n"))
        return arguments.failed("the address cannot be written");
    int signal = 0;
    sigwait(&ending, &signal);
    return exitOk;
}

}  // namespace

const Command serveCommand = {
    "serve",
    "the demonstration backend on its own, until it is interrupted",
    "Writes ca.pem, server.der, server.pem and server.key, made anew, into DIR and prints\n"
    "\"listening on https://127.0.0.1:PORT\". It tells a small wallet's story under /api/v1, answers\n"
    "/echo with what arrived and misbehaves under /misbehave/NAME. For instance:\n\n"
    "  torvel serve --dir /tmp/backend &\n"
    "  curl --cacert /tmp/backend/ca.pem https://127.0.0.1:PORT/echo",
    options,
    serve,
};

}  // namespace torvel::cli
