// The sidecars quilo set-icon writes, walked by ExifTool: its verbose listing
// must find the Finder info and the attribute area where macOS keeps them,
// and in the fork every resource our own walk finds, at the same offset, of
// the same length, starting with the same bytes.
#include "CustomIconTree.h"
#include "tests/support/TemporaryDirectory.h"

namespace quilo::test {
namespace {

// ExifTool prints resource IDs as unsigned hex and offsets from the fork's
// start to the data's length word, then dumps the data's first bytes.
std::string exifToolResourceLines(const ForkResource& resource)
{
    char line[96];
    std::snprintf(line, sizeof line, "%c%c%c%c resource ID 0x%04x (offset 0x%04zx, %zu bytes, name=''):\n",
                  char(resource.type >> 24), char(resource.type >> 16), char(resource.type >> 8), char(resource.type),
                  unsigned(std::uint16_t(resource.id)), resource.offset, resource.data.size());
    const auto head = std::span(resource.data).first(std::min<std::size_t>(16, resource.data.size()));
    return line + ("  |     0000: " + hexBytes(head) + " [");
}

TEST(ExifToolReadsOurSidecars, FileFolderAndIconFile)
{
    if (!installed("exiftool"))
        FAIL() << "exiftool is not installed (scripts/setup installs it)";
    TemporaryDirectory directory;
    const CustomIconTree tree(directory.path());
    for (const auto& item : {tree.photo, tree.folder, tree.iconFile}) {
        const auto path = CustomIconTree::sidecarOf(item);
        SCOPED_TRACE(path.filename().string());
        const Sidecar ours = readSidecar(path);
        const Outcome result = runProgram({"exiftool", "-a", "-G1", "-s", "-v3", path.string()});
        ASSERT_EQ(result.status, 0) << result.output;
        const std::vector<ForkResource> resources = forkResources(ours.fork);
        // The family and the four older icons; the folder's own fork is empty.
        ASSERT_EQ(resources.size(), item == tree.folder ? 0u : 5u);

        std::vector<std::string> expected{
            "FileType = MacOS", "[MacOS directory with 2 entries]", "- Tag 0x0009 (3760 bytes):",
            // The first half of the Finder info at 50, as ExifTool dumps it.
            "0032: " + hexBytes(std::span(ours.finderInfo).first(16)), "[ATTR directory with 0 entries]",
            "- Tag 0x0002 (" + std::to_string(ours.fork.size()) + " bytes):"};
        if (!resources.empty())
            expected.push_back("[RSRC directory with " + std::to_string(resources.size()) + " entries]");
        for (const ForkResource& resource : resources)
            expected.push_back(exifToolResourceLines(resource));
        for (const std::string& line : expected)
            EXPECT_NE(result.output.find(line), std::string::npos) << line << "\nnot in\n" << result.output;
    }
}

} // namespace
} // namespace quilo::test
