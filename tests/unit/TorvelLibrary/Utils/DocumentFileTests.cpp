#include "TorvelLibrary/Utils/Utils.h"
#include "support/StoreTest.h"

#include <sys/stat.h>

namespace torvel {
namespace {

struct DocumentFileTest : testing::StoreTest {
    std::filesystem::path documents() const { return data() / "test-host/Documents"; }
};

TEST_F(DocumentFileTest, WrittenReadDeleted) {
    EXPECT_EQ(Utils::readFileFromDocumentDirectory("a.txt"), "");
    EXPECT_FALSE(Utils::deleteFileFromDocumentDirectory("a.txt"));
    EXPECT_FALSE(std::filesystem::exists(data()));

    EXPECT_TRUE(Utils::writeFileToDocumentDirectory("a.txt", "a longer text"));
    EXPECT_TRUE(Utils::writeFileToDocumentDirectory("a.txt", "\xE2\x82\xAC"));
    EXPECT_EQ(Utils::readFileFromDocumentDirectory("a.txt"), "\xE2\x82\xAC");
    struct stat status {};
    ASSERT_EQ(::stat(documents().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);

    std::ofstream(documents() / "latin") << "\xE9";
    EXPECT_EQ(Utils::readFileFromDocumentDirectory("latin"), "");
    EXPECT_FALSE(Utils::writeFileToDocumentDirectory("b", "\xE9"));
    std::filesystem::create_directories(documents() / "folder");
    EXPECT_FALSE(Utils::writeFileToDocumentDirectory("folder", "x"));
    EXPECT_TRUE(Utils::deleteFileFromDocumentDirectory("a.txt"));
    EXPECT_FALSE(Utils::deleteFileFromDocumentDirectory("a.txt"));
}

TEST_F(DocumentFileTest, NamesStayInTheDirectory) {
    EXPECT_TRUE(Utils::writeFileToDocumentDirectory("..a b\\", "x"));
    std::ofstream(documents().parent_path() / "outside") << "secret";
    using namespace std::string_literals;
    for (const std::string& name : {""s, "."s, ".."s, "../outside"s, "/etc/hostname"s, "a/b"s, "a\0b"s}) {
        EXPECT_FALSE(Utils::writeFileToDocumentDirectory(name, "x")) << name;
        EXPECT_EQ(Utils::readFileFromDocumentDirectory(name), "") << name;
        EXPECT_FALSE(Utils::deleteFileFromDocumentDirectory(name)) << name;
    }
}

}  // namespace
}  // namespace torvel
