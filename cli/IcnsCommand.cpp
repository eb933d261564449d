#include "cli/Command.h"

#include "cli/BatchRunner.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/PictureLoader.h"

#include <cstdio>
#include <set>
#include <thread>
#include <unistd.h>

namespace quilo::cli {
namespace {

constexpr const char* kHelp = R"(Usage: quilo icns PICTURE... --output DIR [--interpolation MODE] [--jobs N]

Makes one .icns file per picture in DIR, named after the picture (photo.jpg
gives photo.icns), holding the picture's thumbnails at 128, 32 and 16 pixels.
A file of that name in DIR is replaced.

  --interpolation MODE  high (the default), low (bilinear), none (nearest
                        pixel) or default (the same as high)
  --jobs N              pictures worked on at once (default: one per core)

The exit status is 0 when every picture succeeded, 1 when any failed.
)";

std::optional<ImageInterpolation> parseInterpolation(const std::string& name)
{
    if (name == "high")
        return ImageInterpolation::High;
    if (name == "low")
        return ImageInterpolation::Low;
    if (name == "none")
        return ImageInterpolation::None;
    if (name == "default")
        return ImageInterpolation::Default;
    return std::nullopt;
}

// photo.jpg -> photo.icns; a second picture with the same stem keeps its
// whole name (photo.png -> photo.png.icns) so nothing is overwritten.
std::vector<std::filesystem::path> targetsFor(const std::vector<std::string>& pictures,
                                              const std::filesystem::path& directory)
{
    std::set<std::string> taken;
    std::vector<std::filesystem::path> targets;
    for (const std::string& picture : pictures) {
        const std::filesystem::path path(picture);
        std::string name = path.stem().string() + ".icns";
        if (!taken.insert(name).second) {
            name = path.filename().string() + ".icns";
            taken.insert(name);
        }
        targets.push_back(directory / name);
    }
    return targets;
}

std::string makeIcns(const std::string& picture, const std::filesystem::path& target,
                     ImageInterpolation interpolation)
{
    const PictureLoadResult loaded = imageWithContentsOfFile(picture);
    if (!loaded.image)
        return loaded.error;
    const IconFamily family(*loaded.image, interpolation);
    family.writeToFile(target);
    // writeToFile cannot report a failure; look for the result instead.
    std::error_code error;
    if (std::filesystem::file_size(target, error) != family.iconFamilyHandle().size() || error)
        return "cannot write " + target.string();
    return {};
}

std::optional<int> parseJobs(const std::optional<std::string>& text)
{
    if (!text)
        return int(std::max(1u, std::thread::hardware_concurrency()));
    try {
        const int jobs = std::stoi(*text);
        if (jobs >= 1 && jobs <= 64)
            return jobs;
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

int run(const Arguments& arguments)
{
    const auto output = arguments.option("output");
    if (arguments.positionals.empty() || !output) {
        std::fprintf(stderr, "quilo icns: name at least one picture and --output DIR\n");
        return kExitUsage;
    }
    const auto interpolation = parseInterpolation(arguments.option("interpolation").value_or("high"));
    const auto jobs = parseJobs(arguments.option("jobs"));
    if (!interpolation || !jobs) {
        std::fprintf(stderr, "quilo icns: --interpolation takes high, low, none or default; --jobs 1 to 64\n");
        return kExitUsage;
    }
    if (!makeOutputDirectory("icns", *output))
        return kExitFailure;
    const auto& pictures = arguments.positionals;
    const auto targets = targetsFor(pictures, *output);
    BatchProgress progress(pictures.size(), ::isatty(STDERR_FILENO) != 0);
    const bool allSucceeded = runBatch(pictures.size(), *jobs, [&](std::size_t i) {
        return makeIcns(pictures[i], targets[i], *interpolation);
    }, [&](std::size_t i, const std::string& failure) { progress.report(i, pictures[i], failure); });
    progress.finish();
    return allSucceeded ? kExitSuccess : kExitFailure;
}

} // namespace

const Command& icnsCommand()
{
    static const Command command{"icns", "make an .icns file of thumbnails for each picture", kHelp,
                                 {{"output", "interpolation", "jobs"}, {}}, &run};
    return command;
}

} // namespace quilo::cli
