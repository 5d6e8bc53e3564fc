#include "Bench.h"
#include "CipherPeer.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelLibrary/crypto/AESCipher.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/Data.h"

#include <malloc.h>

namespace torvel::bench {
namespace {

const std::string password = "0123456789abcdef";

// One size of text and what is asked for it; 0 asks nothing.
struct Row {
    const char* name;
    std::size_t size;
    double encrypt, ofLimit;   // peer's time over ours, share of the bare chain
    double decrypt, ofKernel;  // peer's time over ours, share of the bare kernel
};
constexpr Row rows[] = {
    {"16B", 16, 18, 0.70, 10, 0},
    {"256B", 256, 6, 0.85, 9, 0},
    {"1KiB", 1024, 0, 0, 0, 0},
    {"4KiB", 4096, 2.1, 0.95, 11, 0.45},
    {"64KiB", 65536, 1.7, 0.96, 13, 0.65},
    {"1MiB", 1048576, 1.65, 0.96, 15, 0.65},
};

std::string sampleText(std::size_t size) {
    const std::string_view line = "{\"to\":\"0700000002\",\"amount\":\"12.50\",\"note\":\"rent, March\"},\n";
    std::string text;
    while (text.size() < size) text += line.substr(0, size - text.size());
    return text;
}

const std::uint8_t* bytes(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}
std::uint8_t* bytes(std::string& text) { return reinterpret_cast<std::uint8_t*>(text.data()); }

// A text that decryptString reads.
std::string received(std::string_view plain) {
    const std::string sent = AES256CBC::encryptString(plain, password).value();
    return Base64::encode({bytes(sent), 16}) + sent.substr(16);
}

void check(const Row& row) {
    const std::string plain = sampleText(row.size), text = received(plain);
    if (AES256CBC::decryptString(text, password) != plain || ordinary::decryptString(text, password) != plain)
        giveUp("the sides disagree");
}

// What a line compares, in the order of the sides: ours, the peer's, the limit's.
struct Goal {
    const char *operation, *limit;
    double overPeer, ofLimit;
};

void tell(Report& report, const Row& row, const Goal& goal, const Rounds& rounds) {
    const std::string name = std::string(goal.operation) + "-" + row.name;
    const std::string overPeer = name + "-peer-over-ours", ofLimit = name + "-share-of-" + goal.limit;
    report.time(overPeer, "ours", rounds.time(0));
    report.time(overPeer, "peer", rounds.time(1));
    report.time(ofLimit, goal.limit, rounds.time(2));
    if (goal.overPeer > 0) report.atLeast(overPeer, rounds.ratio(1, 0), goal.overPeer);
    if (goal.ofLimit > 0) report.atLeast(ofLimit, rounds.ratio(2, 0), goal.ofLimit);
}

void measureEncryption(Report& report, const Row& row) {
    const std::string plain = sampleText(row.size), padded = plain + password;
    std::string out(padded.size(), 'x');
    const std::uint8_t* const last = bytes(out) + row.size;
    const Rounds rounds = takeTurns({
        repeating([&] { keep(AES256CBC::encryptString(plain, password)); }),
        repeating([&] { keep(ordinary::encryptString(plain, password)); }),
        // The key of each message is the last block of the one before: without that the processor works on
        // several messages at a time, which is no limit for one.
        repeating([&] { bare::encrypt(last, last, bytes(padded), bytes(out), padded.size() / 16); }),
    });
    tell(report, row, {"encrypt", "chain", row.encrypt, row.ofLimit}, rounds);
}

void measureDecryption(Report& report, const Row& row) {
    const std::string plain = sampleText(row.size), text = received(plain), cipher = plain + password;
    std::string out(cipher.size(), 'x');
    const std::uint8_t* const last = bytes(out) + row.size;
    const auto kernel = bare::hasVAES() ? bare::decrypt512 : bare::decrypt128;
    const Rounds rounds = takeTurns({
        repeating([&] { keep(AES256CBC::decryptString(text, password)); }),
        repeating([&] { keep(ordinary::decryptString(text, password)); }),
        repeating([&] { kernel(last, last, bytes(cipher), bytes(out), cipher.size() / 16); }),
    });
    tell(report, row, {"decrypt", "kernel", row.decrypt, row.ofKernel}, rounds);
}

}  // namespace
}  // namespace torvel::bench

int main() {
    using namespace torvel::bench;
    // Memory of large texts comes back from the heap, for both sides: fresh pages cost more than the cipher.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    Report report("cipher");
    for (const Row& row : rows) {
        check(row);
        measureEncryption(report, row);
        measureDecryption(report, row);
    }
    return report.exitCode();
}
