// What quilo set-icon writes, as The Unarchiver sees it: the sidecars packed
// into a zip the way a Mac packs them (`__MACOSX/._NAME`), listed by lsar and
// unpacked by unar, and a sidecar handed to lsar on its own. Finder info and
// resource forks must come out exactly as in our sidecars.
#include "CustomIconTree.h"
#include "tests/support/TemporaryDirectory.h"

#include <map>

namespace quilo::test {
namespace {

using Fields = std::map<std::string, std::string>;

// `lsar -L` prints each entry as a header line, then "  Key: value" lines;
// deeper-indented lines continue the nested original-entry listing.
std::vector<Fields> lsarEntries(const std::string& listing)
{
    std::vector<Fields> entries;
    std::size_t start = listing.find('\n'); // past the archive's own line
    while (start != std::string::npos && start + 1 < listing.size()) {
        const std::size_t end = listing.find('\n', start + 1);
        const std::string line = listing.substr(start + 1, end == std::string::npos ? end : end - start - 1);
        start = end;
        if (!line.starts_with("  ")) {
            entries.emplace_back();
            continue;
        }
        const std::size_t colon = line.find(':');
        if (line[2] == ' ' || colon == std::string::npos || entries.empty())
            continue;
        const std::size_t value = line.find_first_not_of(' ', colon + 1);
        entries.back()[line.substr(2, colon - 2)] = value == std::string::npos ? "" : line.substr(value);
    }
    return entries;
}

const Fields* forkEntry(const std::vector<Fields>& entries, const std::string& name)
{
    for (const Fields& entry : entries)
        if (entry.contains("Name") && entry.at("Name") == name && entry.contains("Is a Mac OS resource fork"))
            return &entry;
    return nullptr;
}

std::string field(const Fields& entry, const std::string& key)
{
    const auto found = entry.find(key);
    return found == entry.end() ? "(missing)" : found->second;
}

// "54.6 KB (54588 bytes)" or "0 bytes": the exact count.
std::size_t byteCount(const std::string& size)
{
    const std::size_t open = size.rfind('(');
    return std::stoul(open == std::string::npos ? size : size.substr(open + 1));
}

// How lsar prints 32 bytes of Finder info: hex in groups of four.
std::string lsarFinderInfo(const std::vector<std::uint8_t>& info)
{
    std::string text = std::to_string(info.size()) + " bytes (";
    for (std::size_t i = 0; i < info.size(); i += 4)
        text += (i ? " " : "") + hexBytes(std::span(info).subspan(i, 4), "");
    return text + ")";
}

std::string lsarCode(OSType code)
{
    char text[32];
    std::snprintf(text, sizeof text, "%c%c%c%c (0x%08x)", char(code >> 24), char(code >> 16), char(code >> 8),
                  char(code), code);
    return text;
}

struct Item {
    std::string nameInArchive;
    std::filesystem::path path;
    std::uint16_t flags; // what set-icon is meant to have left
    OSType type, creator;
};

std::vector<Item> itemsOf(const CustomIconTree& tree)
{
    return {
        {"photo.jpg", tree.photo, kHasCustomIcon, fourCharCode("JPEG"), fourCharCode("8BIM")},
        {"folder", tree.folder, kHasCustomIcon, 0, 0},
        {"folder/Icon\r", tree.iconFile, kIsInvisible, kUnknownFourCharCode, kUnknownFourCharCode},
    };
}

// lsar's view of one item's metadata against our sidecar's bytes.
void expectLsarAgrees(const Fields& entry, const Item& item, const Sidecar& ours)
{
    EXPECT_EQ(field(entry, "Mac OS Finder info"), lsarFinderInfo(ours.finderInfo));
    char flags[8];
    std::snprintf(flags, sizeof flags, "0x%04x", item.flags);
    EXPECT_EQ(field(entry, "Mac OS Finder flags"), flags);
    if (item.type) {
        EXPECT_EQ(field(entry, "Mac OS type code"), lsarCode(item.type));
        EXPECT_EQ(field(entry, "Mac OS creator code"), lsarCode(item.creator));
    }
    EXPECT_EQ(byteCount(field(entry, "Size")), ours.fork.size());
}

bool hasTheUnarchiver()
{
    return installed("lsar") && installed("unar") && installed("zip");
}

TEST(TheUnarchiverReadsOurSidecars, InAZipAsAMacPacksThem)
{
    ASSERT_TRUE(hasTheUnarchiver()) << "lsar, unar or zip is not installed (scripts/setup installs them)";
    if (IsSkipped())
        return;
    TemporaryDirectory directory;
    const CustomIconTree tree(directory / "tree");
    const std::vector<Item> items = itemsOf(tree);

    // The items as they are, their sidecars under __MACOSX at the same place.
    const auto packing = directory / "packing";
    std::filesystem::create_directories(packing / "__MACOSX/folder");
    std::filesystem::copy(tree.photo, packing / "photo.jpg");
    std::filesystem::create_directory(packing / "folder");
    std::filesystem::copy(tree.iconFile, packing / "folder/Icon\r");
    for (const Item& item : items)
        std::filesystem::copy(CustomIconTree::sidecarOf(item.path),
                              packing / "__MACOSX" / std::filesystem::path(item.nameInArchive).parent_path()
                                  / ("._" + item.path.filename().string()));
    const auto archive = directory / "archive.zip";
    ASSERT_TRUE(ran({"sh", "-c", "cd \"$0\" && zip -q -X -r \"$1\" photo.jpg folder __MACOSX", packing.string(),
                     archive.string()}));

    const Outcome listing = runProgram({"lsar", "-L", archive.string()});
    ASSERT_EQ(listing.status, 0) << listing.output;
    const std::vector<Fields> entries = lsarEntries(listing.output);
    const auto unpacked = directory / "unpacked";
    ASSERT_TRUE(ran({"unar", "-q", "-D", "-forks", "visible", "-o", unpacked.string(), archive.string()}));

    for (const Item& item : items) {
        SCOPED_TRACE(item.nameInArchive);
        const Sidecar ours = readSidecar(CustomIconTree::sidecarOf(item.path));
        ASSERT_EQ(ours.finderFlags(), item.flags);
        const Fields* entry = forkEntry(entries, item.nameInArchive);
        ASSERT_NE(entry, nullptr) << "no fork entry in\n" << listing.output;
        expectLsarAgrees(*entry, item, ours);

        // unar writes each fork out as an AppleDouble file of its own making.
        const Sidecar extracted = readSidecar(unpacked / (item.nameInArchive + ".rsrc"));
        EXPECT_EQ(hexBytes(extracted.finderInfo), hexBytes(ours.finderInfo));
        EXPECT_TRUE(extracted.fork == ours.fork) << "unar's fork has " << extracted.fork.size() << " bytes, ours "
                                                 << ours.fork.size() << "; they differ";
    }
}

} // namespace
} // namespace quilo::test
