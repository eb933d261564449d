// Parses the input as a resource fork and, when they parse, writes them back, edits
// them and reads them again.
#include "tests/fuzz/FuzzTarget.h"

#include "tests/fuzz/FuzzCheck.h"
#include "iconfamily/ResourceFork.h"


namespace quilo::fuzz {
namespace {

void expect(bool holds, const char* promise)
{
    fuzz::expect(holds, "resource fork codec", promise);
}

} // namespace

void fuzzInput(std::span<const std::uint8_t> bytes)
{
    const auto fork = parseResourceFork(bytes);
    if (!fork)
        return;
    const auto written = serialiseResourceFork(*fork);
    // Shared names can make a map too large to write back without sharing.
    if (!written)
        return;
    expect(parseResourceFork(*written) == fork, "a fork must read back as written");

    // What setting a custom icon does: replace one resource, keep the rest.
    ResourceFork edited = *fork;
    Resource icon{fourCharCode("icns"), -16455, "", 0, {1, 2, 3}};
    edited.remove(icon.type, icon.id);
    expect(edited.add(icon), "a free ID must be added");
    expect(!edited.add(icon), "a taken ID must not be added");
    const auto editedBytes = serialiseResourceFork(edited);
    if (!editedBytes)
        return;
    const auto reread = parseResourceFork(*editedBytes);
    expect(reread && reread->find(icon.type, icon.id) && *reread->find(icon.type, icon.id) == icon,
           "an added resource must read back");
    expect(reread->resources.size() == fork->resources.size() + (fork->find(icon.type, icon.id) ? 0 : 1),
           "a replaced resource must not be doubled");
    for (const Resource& resource : fork->resources)
        if (resource.type != icon.type || resource.id != icon.id)
            expect(reread->find(resource.type, resource.id) && *reread->find(resource.type, resource.id) == resource,
                   "other resources must survive an edit");
}

} // namespace quilo::fuzz
