#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelTesting/HostFixture.h"

#include <gmock/gmock.h>

namespace torvel {

struct WalletScreen {};
TORVEL_TYPE(Wallet, WalletScreen);

namespace {

class Extenstions : public testing::HostFixture {};

TEST_F(Extenstions, TakesURLsApart) {
    const struct {
        const char *text, *domain, *path;
        std::map<std::string, std::string> query;
    } rows[] = {
        {"https://pay.example/p/q?id=7", "pay.example", "/p/q", {{"id", "7"}}},
        {"scheme://host/pay/confirm?id=7", "host", "/pay/confirm", {{"id", "7"}}},
        {"transfer", "", "transfer", {}},
        {"a?x=1&x=2", "", "a", {{"x", "2"}}},
        {"a?x=1&x", "", "a", {}},
        {"a?x=1&x=%25G0", "", "a", {}},  // the second decoding fails
        {"a?x=%2541", "", "a", {{"x", "A"}}},
        {"/a?x=1%202&y=a+b", "", "/a", {{"x", "1 2"}, {"y", "a+b"}}},
        {"/a%20b", "", "/a b", {}},
        {"two words?x=1", "", "", {}},
        {"", "", "", {}},
        {"a?", "", "a", {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(getURLDomain(row.text), row.domain) << row.text;
        EXPECT_EQ(path(row.text), row.path) << row.text;
        const PayloadDictionary parameters = queryParameters(row.text);
        EXPECT_EQ(parameters.size(), row.query.size()) << row.text;
        for (const auto& [name, value] : row.query)
            EXPECT_EQ(parameters.get<std::string>(name), value) << row.text;
    }
}

TEST_F(Extenstions, FindsAndLoadsFilesOrLogsWhyNot) {
    const std::string note = addResource("note 1.txt", std::string("a\0b", 3)).string();
    const std::optional<URL> here = URL::file(directory().string());
    EXPECT_EQ(getPathURLFromBundle("note 1", "txt", Bundle::main())->path(), note);
    EXPECT_EQ(getPathURLFromDocumentsDirectory("note 1", "txt", here)->path(), note);
    EXPECT_EQ(Utils::loadFileContents(URL::file(note)), Data(std::string("a\0b", 3)));

    const auto message = [](auto absent) {
        const std::string log = logOf([&] { EXPECT_FALSE(absent().has_value()); });
        return log.substr(log.find(") -> ") + 5);
    };
    EXPECT_EQ(message([] { return getPathURLFromBundle("other", "plist", Bundle::main()); }),
              "Resource named other not found at bundle.\n");
    EXPECT_EQ(message([&] { return getPathURLFromDocumentsDirectory("absent", "txt", here); }),
              "File named absent not found on Disk Space at Documents Directory.\n");
    EXPECT_EQ(message([] { return getPathURLFromDocumentsDirectory("absent", "txt", std::nullopt); }),
              "Disk Folder named Documents Directory not found on Disk.\n");
    for (const std::string name : {"absent", "."})
        EXPECT_THAT(
            message([&] { return Utils::loadFileContents(URL::file((directory() / name).string())); }),
            ::testing::StartsWith("The file"));
}

TEST_F(Extenstions, PrefersTheBundleOfTheModule) {
    EXPECT_EQ(resourceBundleFor<WalletScreen>(), Bundle::main());
    std::filesystem::create_directory(directory() / "Wallet.bundle");
    EXPECT_EQ(resourceBundleFor<WalletScreen>().directory(), directory() / "Wallet.bundle");
}

TEST_F(Extenstions, GuessesMimeTypesFromTheFirstByte) {
    const std::pair<const char*, const char*> rows[] = {
        {"\xFF\xD8", "image/jpeg"}, {"\x89PNG", "image/png"},         {"GIF8", "image/gif"},
        {"MM", "image/tiff"},       {"%PDF", "application/pdf"},      {"\xD0", "application/vnd"},
        {"From", "text/plain"},     {"", "application/octet-stream"}, {"Dear", "application/octet-stream"},
    };
    for (const auto& [bytes, type] : rows) EXPECT_EQ(mimeType(Data(bytes)), type) << bytes;
}

TEST_F(Extenstions, ScalesToTheScreen) {
    EXPECT_EQ(dp(10), 10);
    ScreenEnvironment::widthInPoints = 414;
    EXPECT_DOUBLE_EQ(dp(10), 11.04);
}

TEST(PayloadDictionary, KeysOfEveryKind) {
    PayloadDictionary payload;
    payload.set("text", "value");
    payload.set(7, 1.5);
    payload.set(7L, true);
    EXPECT_EQ(payload.get<std::string>(std::string("text")), "value");
    EXPECT_EQ(payload.get<int>("text"), std::nullopt) << "another type";
    payload.remove(7);
    EXPECT_FALSE(payload.contains(7));
    EXPECT_EQ(payload.size(), 2U);
}

}  // namespace
}  // namespace torvel
