#include "Bench.h"
#include "BenchFiles.h"
#include "TorvelLibrary/Data/Local/EndpointsHelper.h"
#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/Utils/Amounts.h"
#include "TorvelLibrary/Utils/FontCache.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/validation/ValidationHelper.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/Text.h"
#include "TorvelPlatform/foundation/WallClock.h"
#include "TorvelPlatform/uikit/UIColor.h"

#include <QApplication>
#include <array>
#include <memory>

#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <unicode/decimfmt.h>
#include <unicode/numberformatter.h>
#include <unicode/regex.h>
#include <unicode/smpdtfmt.h>
#include <unistd.h>

namespace torvel::bench {
namespace {

// --- Look-ups. Every side asks for the same 64 texts in turn, so that what differs is the table's size. ---

constexpr std::size_t asked = 64;

std::string keyOf(std::size_t i) { return "wallet.transfer.confirmation.title." + std::to_string(i); }
std::string valueOf(std::size_t i) { return "v1/wallet/transfers/" + std::to_string(i); }

using BareMap = ByText<std::string>;

BareMap bareMap(std::size_t size) {
    BareMap map;
    for (std::size_t i = 0; i < size; ++i) map.emplace(keyOf(i), valueOf(i));
    return map;
}

// Spread over the table.
std::vector<std::string> keysOf(std::size_t size) {
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < asked; ++i) keys.push_back(keyOf(i * size / asked));
    return keys;
}

template <class LookUp>
Side askingFor(const std::vector<std::string>& keys, LookUp lookUp) {
    return [&keys, lookUp](std::size_t times) {
        for (; times > 0; --times)
            for (const std::string& key : keys) keep(lookUp(std::string_view(key)));
    };
}

// A kind of look-up over a table of some size, which it makes.
struct Table {
    const char* name;
    double bound;
    bool copies;  // hands out a text of its own, as the bare side then does
    std::size_t sizes[2];
    std::function<std::function<Side(const std::vector<std::string>& keys)>(std::size_t size)> make;
};

void measure(Report& report, const Table& table) {
    const BareMap yardstick = bareMap(asked);
    const std::vector<std::string> yardstickKeys = keysOf(asked);
    double overYardstick[2];
    for (int i = 0; i < 2; ++i) {
        const std::size_t size = table.sizes[i];
        const BareMap bare = bareMap(size);
        const std::vector<std::string> keys = keysOf(size);
        const auto find = [&](const BareMap& map, const std::vector<std::string>& texts) {
            if (table.copies)
                return askingFor(texts, [&map](std::string_view key) { return map.find(key)->second; });
            return askingFor(texts, [&map](std::string_view key) { return &map.find(key)->second; });
        };
        const Rounds rounds =
            takeTurns({table.make(size)(keys), find(bare, keys), find(yardstick, yardstickKeys)});
        const std::string name = std::string(table.name) + "-of-" + std::to_string(size) + "-over-map-find";
        report.time(name, "torvel", rounds.time(0) / asked);
        report.time(name, "find", rounds.time(1) / asked);
        report.atMost(name, rounds.ratio(0, 1), table.bound);
        overYardstick[i] = rounds.ratio(0, 2);
    }
    report.atMost(std::string(table.name) + "-of-" + std::to_string(table.sizes[1]) + "-over-of-" +
                      std::to_string(table.sizes[0]),
                  overYardstick[1] / overYardstick[0], 1.5);
}

std::string stringsOf(std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
        text.append("\"").append(keyOf(i)).append("\" = \"").append(valueOf(i)).append("\";\n");
    return text;
}

std::string endpointsOf(std::size_t size) {
    std::string text = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>";
    for (std::size_t i = 0; i < size; ++i)
        text += "<key>" + keyOf(i) + "</key><string>" + valueOf(i) + "</string>";
    return text + "</dict></plist>";
}

void measureLookUps(Report& report, const Folder& folder) {
    LocaleHelper::doTheSwizzling();
    LocaleHelper::setAppleLanguageTo("en");
    measure(report, {"localised", 4, true, {100, 100'000}, [&](std::size_t size) {
                         const std::string table = "Table" + std::to_string(size);
                         folder.write("en.lproj/" + table + ".strings", stringsOf(size));
                         return [table](const std::vector<std::string>& keys) {
                             return askingFor(keys, [table](std::string_view key) {
                                 return Bundle::main().localizedString(key, std::nullopt, table);
                             });
                         };
                     }});
    measure(report, {"endpoint", 2, true, {100, 100'000}, [&](std::size_t size) {
                         folder.write("EndpointsConfig.plist", endpointsOf(size));
                         EndpointsHelper::getEndPoint<std::string>("");
                         EndpointsHelper::instance()->loadAppEndPoints();
                         return [](const std::vector<std::string>& keys) {
                             return askingFor(keys, [](std::string_view key) {
                                 return EndpointsHelper::getEndPoint<std::string>(key);
                             });
                         };
                     }});
    measure(
        report,
        {"colour", 2, false, {100, 10'000}, [&](std::size_t size) {
             const std::string bundle = "Colours" + std::to_string(size);
             for (std::size_t i = 0; i < size; ++i)
                 folder.write(bundle + "/Assets.xcassets/" + keyOf(i) + ".colorset/Contents.json",
                              R"({"colors":[{"idiom":"universal","color":{"color-space":"srgb","components":)"
                              R"({"red":"0.5","green":"0.25","blue":"0.75","alpha":"1.0"}}}]})");
             const Bundle colours = Bundle::at(folder / bundle).value();
             return [colours](const std::vector<std::string>& keys) {
                 return askingFor(
                     keys, [colours](std::string_view key) { return UIColor::named(key, colours).value(); });
             };
         }});
}

// Fonts are asked for by function, not by text: over a find among as many texts as there are styles.
void measureFonts(Report& report) {
    const std::array getters{&FontCache::getLightTitle16Font, &FontCache::getMediumSubTitleFont,
                             &FontCache::getRegularSmallFont, &FontCache::getBoldHeadlineFont};
    const BareMap styles = bareMap(74);
    const std::vector<std::string> keys{keyOf(0), keyOf(20), keyOf(40), keyOf(60)};
    const Rounds rounds =
        takeTurns({repeating([&] {
                       for (const auto getter : getters) keep(getter());
                   }),
                   askingFor(keys, [&](std::string_view key) { return &styles.find(key)->second; })});
    report.time("cached-font-over-map-find", "torvel", rounds.time(0) / 4);
    report.time("cached-font-over-map-find", "find", rounds.time(1) / 4);
    report.atMost("cached-font-over-map-find", rounds.ratio(0, 1), 2);
}

// --- Amounts, validation, configuration ---

icu::UnicodeString unicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

void measureAmounts(Report& report) {
    const auto amount = [](const std::string& currency) {
        return getDisplayAmountWithoutCurrency("1234567.25", currency, true);
    };
    const std::string dollar = "$", euro = "€";
    // Finding a symbol's locale for the first time is not what is asked.
    const std::string euros = amount(euro), dollars = amount(dollar);
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::NumberFormat> bare(icu::NumberFormat::createInstance(
        icu::Locale(defaultLocale().identifier().c_str()), UNUM_CURRENCY, error));
    const auto format = [&] {
        icu::UnicodeString text;
        std::string utf8;
        bare->format(1234567.25, text).toUTF8String(utf8);
        return utf8;
    };
    if (format().find(dollars) == std::string::npos) giveUp("amounts differ");
    const Rounds rounds = takeTurns(
        {repeating([&] { keep(amount(dollar)); }), repeating([&] { keep(format()); }), repeating([&] {
             keep(amount(euro));
             keep(amount(dollar));
         })});
    report.time("amount-over-icu-format", "torvel", rounds.time(0));
    report.time("amount-over-icu-format", "icu", rounds.time(1));
    report.atMost("amount-over-icu-format", rounds.ratio(0, 1), 1.3);
    report.atMost("amount-currency-change-microseconds", (rounds.time(2) / 2 - rounds.time(0)) * 1e6, 1);
}

void measureValidation(Report& report) {
    const std::string pattern = "^(\\+?237)?6[5-9][0-9]{7}$", number = "+237677123456";
    UErrorCode error = U_ZERO_ERROR;
    icu::RegexMatcher matcher(unicode(pattern), 0, error);
    const auto bare = [&] {
        const icu::UnicodeString text = unicode(number);
        return matcher.reset(text).matches(error) != 0;
    };
    if (!bare() || !ValidationHelper::validateData(number, pattern)) giveUp("a match differs");
    const Rounds rounds =
        takeTurns({repeating([&] { keep(ValidationHelper::validateData(number, pattern)); }),
                   repeating([&] { keep(bare()); })});
    report.time("validation-over-icu-match", "torvel", rounds.time(0));
    report.time("validation-over-icu-match", "icu", rounds.time(1));
    report.atMost("validation-over-icu-match", rounds.ratio(0, 1), 1.2);
}

// What a value costs that is read once: the load of its address behind the check that it is there.
[[gnu::noinline]] const std::string& loaded() {
    static const std::string value = valueOf(0);
    return value;
}

void measureConfiguration(Report& report) {
    const auto eight = [](const auto& read) {
        for (int i = 0; i < 8; ++i) keep(read());
    };
    const Rounds rounds =
        takeTurns({repeating([&] { eight([] { return TorvelConfigurations::amountRegex().data(); }); }),
                   repeating([&] { eight([] { return loaded().data(); }); })});
    report.time("configuration-read-over-load", "torvel", rounds.time(0) / 8);
    report.time("configuration-read-over-load", "load", rounds.time(1) / 8);
    report.atMost("configuration-read-over-load", rounds.ratio(0, 1), 1.5);
}

// --- The log ---

constexpr std::string_view message =
    "Request URL - https://api.example.com/v1/wallet/transfers/confirmation?reference=9";
static_assert(message.size() > 79 && message.size() < 84);

std::string formatted(const icu::DateFormat& format) {
    icu::UnicodeString text;
    std::string utf8;
    format.format(icu::Calendar::getNow(), text).toUTF8String(utf8);
    return utf8;
}

// Runs `work` while what is written to the standard output vanishes.
template <class Work>
auto unseen(Work work) {
    std::fflush(stdout);
    const int output = dup(STDOUT_FILENO), nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    auto result = work();
    std::fflush(stdout);
    dup2(output, STDOUT_FILENO);
    close(output);
    close(nowhere);
    return result;
}

void measureLog(Report& report) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::UnicodeString pattern("yyyy-MM-dd hh:mm:ssSSS");
    const icu::SimpleDateFormat kept(pattern, error);
    // Each in a millisecond of its own: those of one share its text.
    const auto line = [date = WallClock::now()]() mutable {
        WallClock::fix(date += std::chrono::milliseconds(1));
        LogUtils::d(message);
    };
    LogUtils::setLoggingEnabled(false);
    const Rounds silent =
        takeTurns({repeating(line), repeating([&] { keep(formatted(kept)); }),
                   repeating([&] { keep(formatted(icu::SimpleDateFormat(pattern, error))); })});
    report.time("unwritten-line-over-icu-date", "torvel", silent.time(0));
    report.time("unwritten-line-over-icu-date", "icu", silent.time(1));
    report.atMost("unwritten-line-over-icu-date", silent.ratio(0, 1), 0.25);

    // The peer's date, place and severity by a pattern of the same text, flushed line by line as ours is.
    const auto peer = spdlog::basic_logger_st("bench", "/dev/null");
    peer->set_pattern("%Y-%m-%d %I:%M:%S%e [%l] DEBUG[%s]:%# %! -> %v");
    peer->flush_on(spdlog::level::info);
    LogUtils::setLoggingEnabled(true);
    const Rounds written = unseen([&] {
        return takeTurns({repeating(line),
                          repeating([&] { SPDLOG_LOGGER_CALL(peer, spdlog::level::info, "{}", message); })});
    });
    LogUtils::setLoggingEnabled(false);
    report.time("line-over-spdlog", "torvel", written.time(0));
    report.time("line-over-spdlog", "spdlog", written.time(1));
    report.atMost("line-over-spdlog", written.ratio(0, 1), 3);
    report.note("a freshly made ICU date formatter and its text: " + std::to_string(silent.time(2) * 1e6) +
                " microseconds");
}

}  // namespace
}  // namespace torvel::bench

int main(int count, char** arguments) {
    using namespace torvel;
    using namespace torvel::bench;
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const QApplication application(count, arguments);
    const Folder folder;
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
    Bundle::setMain(folder.path(), "bench");
    folder.write("en.lproj/Configurations.strings", "\"torvel_amount_regex\" = \"^[0-9]{1,10}$\";");

    Report report("text");
    measureAmounts(report);
    measureValidation(report);
    measureConfiguration(report);
    measureLookUps(report, folder);
    measureFonts(report);
    measureLog(report);
    return report.exitCode();
}
