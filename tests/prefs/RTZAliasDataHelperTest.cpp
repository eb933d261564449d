// Alias data finds its file again after renames and moves within the folder
// tree, and anything else gives "" with the log line.
#include "prefs/RTZAliasDataHelper.h"
#include "tests/support/Files.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace quilo::test {
namespace {

namespace fs = std::filesystem;

QString qPath(const fs::path& path) { return QString::fromStdString(path.string()); }

TEST(RTZAliasDataHelper, FollowsRenamesAndMovesNearby)
{
    TemporaryDirectory root;
    const fs::path original = root / "Apps/Graphics/quilo";
    writeFileText(original, "program");
    const QByteArray alias =
        RTZAliasDataHelper::aliasDataFromFilePath(qPath(root / "Apps/./Graphics/../Graphics/quilo"));
    ASSERT_FALSE(alias.isEmpty());

    const fs::path rootPath = fs::canonical(root.path());
    EXPECT_EQ(RTZAliasDataHelper::filePathFromAliasData(alias), qPath(rootPath / "Apps/Graphics/quilo"));
    const fs::path moves[] = {"Apps/Graphics/Quilo 2", "Apps/Tools/quilo", "Apps/quilo", "Other/quilo"};
    fs::path current = original;
    for (const fs::path& move : moves) {
        fs::create_directories((root / move.string()).parent_path());
        fs::rename(current, root / move.string());
        current = root / move.string();
        EXPECT_EQ(RTZAliasDataHelper::filePathFromAliasData(alias), qPath(rootPath / move)) << move;
    }

    // A folder renamed with the file in it.
    fs::rename(root / "Other", root / "Elsewhere");
    EXPECT_EQ(RTZAliasDataHelper::filePathFromAliasData(alias), qPath(rootPath / "Elsewhere/quilo"));
}

TEST(RTZAliasDataHelper, UnresolvableDataGivesEmptyPathAndLogLine)
{
    TemporaryDirectory root;
    writeFileText(root / "gone", "soon");
    const QByteArray alias = RTZAliasDataHelper::aliasDataFromFilePath(qPath(root / "gone"));
    ASSERT_GT(alias.size(), 26);
    QByteArray otherVersion = alias;
    otherVersion[5] = 2;
    QByteArray relativePath = alias.left(26) + QByteArray(alias.size() - 26, 'x');
    const std::pair<QByteArray, int> failures[] = {
        {{}, -50},
        {"garbage", -50},
        {alias.left(alias.size() - 1), -50},
        {alias + '\0', -50},
        {otherVersion, -50},
        {relativePath, -50},
        {alias, -43},
    };
    fs::remove(root / "gone");

    for (const auto& [data, error] : failures) {
        LogCapture log;
        EXPECT_EQ(RTZAliasDataHelper::filePathFromAliasData(data), "");
        EXPECT_EQ(log.lines(), std::vector<std::string>{"VXAliasDataHelper: Could not resolve alias date. Error = "
                                                        + std::to_string(error)});
    }
}

TEST(RTZAliasDataHelper, PathsThatNameNothingGetNoReference)
{
    TemporaryDirectory root;
    writeFileText(root / "file", "x");
    const std::pair<QString, bool> paths[] = {{"", false},
                                              {QString("a") + QChar(0) + "b", false},
                                              {qPath(root / "missing"), false},
                                              {qPath(root / "file"), true}};
    const char* const lines[] = {"VXAliasDataHelper: Can't get URL", "VXAliasDataHelper: Can't get URL",
                                 "VXAliasDataHelper: Can't get FSRef", "VXAliasDataHelper: Can't get FSRef"};
    for (std::size_t at = 0; at < std::size(paths); ++at) {
        LogCapture log;
        EXPECT_FALSE(posixStringToFSRef(paths[at].first, paths[at].second));
        EXPECT_EQ(log.lines(), std::vector<std::string>{lines[at]});
    }
    LogCapture log;
    EXPECT_TRUE(RTZAliasDataHelper::aliasDataFromFilePath(qPath(root / "missing")).isEmpty());
    EXPECT_TRUE(posixStringToFSRef(qPath(root.path()), true));
    EXPECT_TRUE(posixStringToFSRef(qPath(root.path()), false));
}

} // namespace
} // namespace quilo::test
