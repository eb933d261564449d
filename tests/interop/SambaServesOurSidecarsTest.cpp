// What a Mac sees of a Linux folder that quilo set-icon touched, shared by
// Samba with its Mac support (vfs_fruit): smbd serves a copy of the folder on
// 127.0.0.1 and smbclient reads each item's AFP_AfpInfo and AFP_Resource
// streams, the Finder info and resource fork a Mac client asks for. Both must
// carry what our sidecars hold.
#include "CustomIconTree.h"
#include "tests/support/TemporaryDirectory.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>

namespace quilo::test {
namespace {

using namespace std::chrono_literals;

// Samba keeps the Finder info it takes out of a sidecar in extended
// attributes, so the share needs a file system with user attributes. /tmp
// may be a tmpfs without them; the build tree then serves instead.
std::filesystem::path scratchParent()
{
    const auto temporary = std::filesystem::temp_directory_path();
    const auto probe = temporary / ("quilo-xattr-probe-" + std::to_string(::getpid()));
    std::ofstream{probe};
    const bool userAttributes = ::setxattr(probe.c_str(), "user.quilo-probe", "1", 1, 0) == 0;
    std::filesystem::remove(probe);
    return userAttributes ? temporary : std::filesystem::path(QUILO_INTEROP_SCRATCH_DIR);
}

int freeLoopbackPort()
{
    const int probe = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    int port = 0;
    if (::bind(probe, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0
        && ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    ::close(probe);
    return port;
}

bool accepts(int port)
{
    const int client = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(std::uint16_t(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool connected = ::connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(client);
    return connected;
}

// One share of a folder for each way fruit keeps the Finder info it takes out
// of a sidecar: in netatalk's attribute, or in a stream of streams_xattr.
constexpr const char* kMetadataModes[] = {"netatalk", "stream"};

// smbd in the foreground; it and the children it forks go together when the
// test ends, passed or not.
class Smbd {
public:
    explicit Smbd(const std::filesystem::path& state) : state_(state), port_(freeLoopbackPort())
    {
        for (const char* directory : {"private", "lock", "state", "cache", "pid", "ncalrpc"})
            std::filesystem::create_directories(state / directory);
        std::ofstream conf(config());
        conf << "[global]\n"
             << "  smb ports = " << port_ << "\n"
             << "  bind interfaces only = yes\n"
             << "  interfaces = lo\n"
             << "  disable netbios = yes\n"
             << "  server role = standalone server\n"
             << "  private dir = " << (state / "private").string() << "\n"
             << "  lock directory = " << (state / "lock").string() << "\n"
             << "  state directory = " << (state / "state").string() << "\n"
             << "  cache directory = " << (state / "cache").string() << "\n"
             << "  pid directory = " << (state / "pid").string() << "\n"
             << "  ncalrpc dir = " << (state / "ncalrpc").string() << "\n"
             << "  log file = " << log().string() << "\n"
             << "  log level = 1\n"
             << "  usershare path =\n"
             << "  load printers = no\n"
             << "  printcap name = /dev/null\n"
             << "  disable spoolss = yes\n"
             // Anonymous clients become the guest, and the guest root: Samba
             // rewrites a sidecar on first use as the connected user, and the
             // tree is root's.
             << "  map to guest = Bad User\n"
             << "  guest account = root\n";
        for (const char* mode : kMetadataModes)
            conf << "[" << mode << "]\n"
                 << "  path = " << (state / mode).string() << "\n"
                 << "  guest ok = yes\n"
                 << "  read only = no\n"
                 // catia with fruit's native encoding keeps "Icon\r" as it is on
                 // disk and shows the carriage return to clients as U+F00D, as a
                 // Mac names it; without them the name is mangled to 8.3.
                 << "  vfs objects = catia fruit streams_xattr\n"
                 // A resource fork in a `._` file beside its owner: the one
                 // place fruit looks for our sidecars.
                 << "  fruit:resource = file\n"
                 << "  fruit:metadata = " << mode << "\n"
                 << "  fruit:encoding = native\n";
        conf.close();

        smbd_ = std::make_unique<ChildProgram>(
            std::vector<std::string>{"smbd", "--foreground", "--no-process-group", "-s", config().string()}, log());
    }

    // Whether smbd takes connections within ten seconds; if not, its log says why.
    ::testing::AssertionResult listening() const
    {
        if (port_ == 0)
            return ::testing::AssertionFailure() << "found no free port";
        for (auto waited = 0ms; waited < 10s; waited += 50ms) {
            if (!smbd_->running())
                return ::testing::AssertionFailure() << "smbd exited:\n" << logText();
            if (accepts(port_))
                return ::testing::AssertionSuccess();
            std::this_thread::sleep_for(50ms);
        }
        return ::testing::AssertionFailure() << "smbd took no connection on port " << port_ << ":\n" << logText();
    }

    // smbclient as a Mac would speak, anonymous, over SMB 3. Our configuration
    // keeps the client's own state files in the scratch directory too.
    Outcome client(const std::string& share, const std::string& commands) const
    {
        return runProgram({"smbclient", "//127.0.0.1/" + share, "-p", std::to_string(port_), "-N", "-m", "SMB3", "-s",
                           config().string(), "-c", commands});
    }

    std::string logText() const
    {
        return smbd_->log();
    }

private:
    std::filesystem::path config() const { return state_ / "smb.conf"; }
    std::filesystem::path log() const { return state_ / "smbd.log"; }

    std::filesystem::path state_;
    int port_;
    std::unique_ptr<ChildProgram> smbd_;
};

// The name a Mac client uses for a file whose name holds a carriage return.
const std::string kIconOnTheWire = "Icon\xEF\x80\x8D"; // "Icon" U+F00D

// 60 bytes: 'AFP\0', version 1.0 (0x00000100), reserved, backup date, Finder
// info at 16, ProDOS information.
::testing::AssertionResult isAfpInfo(const std::vector<std::uint8_t>& stream)
{
    if (stream.size() != 60)
        return ::testing::AssertionFailure() << "AFP_AfpInfo has " << stream.size() << " bytes, not 60";
    if (bigEndian(stream, 0, 4) != 0x41465000 || bigEndian(stream, 4, 4) != 0x00000100)
        return ::testing::AssertionFailure() << "AFP_AfpInfo starts " << hexBytes(std::span(stream).first(8));
    return ::testing::AssertionSuccess();
}

std::vector<std::uint8_t> finderInfoOf(const std::vector<std::uint8_t>& afpInfo)
{
    return {afpInfo.begin() + 16, afpInfo.begin() + 48};
}

TEST(SambaServesOurSidecars, FinderInfoAndForksOfAFileAndAFolder)
{
    if (!installed("smbd") || !installed("smbclient"))
        FAIL() << "smbd or smbclient is not installed (scripts/setup installs samba and smbclient)";
    ASSERT_EQ(::geteuid(), 0u) << "smbd serves shares only when started as root";
    const TemporaryDirectory scratch(scratchParent());
    const CustomIconTree tree(scratch / "tree");
    const struct {
        const char* name;
        Sidecar ours;
        std::uint16_t flags; // what set-icon is meant to have left
        OSType type;
        bool hasFork;
    } items[] = {
        {"photo", readSidecar(CustomIconTree::sidecarOf(tree.photo)), kHasCustomIcon, fourCharCode("JPEG"), true},
        {"folder", readSidecar(CustomIconTree::sidecarOf(tree.folder)), kHasCustomIcon, 0, false},
        {"icon", readSidecar(CustomIconTree::sidecarOf(tree.iconFile)), kIsInvisible, kUnknownFourCharCode, true},
    };
    for (const auto& item : items) {
        ASSERT_EQ(item.ours.finderFlags(), item.flags) << item.name;
        ASSERT_EQ(bigEndian(item.ours.finderInfo, 0, 4), item.type) << item.name;
        ASSERT_EQ(!item.ours.fork.empty(), item.hasFork) << item.name;
    }

    // Samba rewrites each sidecar it reads into a layout of its own, moving the
    // Finder info out: the shares are copies, and what they held at the start
    // is what Quilo wrote.
    const auto state = scratch / "samba";
    std::filesystem::create_directory(state);
    for (const char* mode : kMetadataModes)
        std::filesystem::copy(tree.root, state / mode, std::filesystem::copy_options::recursive);
    const Smbd smbd(state);
    ASSERT_TRUE(smbd.listening());

    for (const char* mode : kMetadataModes) {
        SCOPED_TRACE(std::string("fruit:metadata = ") + mode);
        const auto out = scratch / (std::string("from-") + mode);
        std::filesystem::create_directory(out);
        auto get = [&](const std::string& stream, const std::string& local) {
            return "get \"" + stream + "\" \"" + (out / local).string() + "\"; ";
        };
        // Samba takes a sidecar apart only while looking up a stream of its
        // item that it has already found missing: the first open of an
        // item's AFP_AfpInfo fails, whoever wrote the sidecar. So each
        // item's AFP_Resource is opened first; a folder has none, and that
        // open fails, but leaves the folder's AFP_AfpInfo in place.
        const Outcome result = smbd.client(
            mode, "ls folder/*; " + get("photo.jpg:AFP_Resource", "photo.rsrc")
                      + get("photo.jpg:AFP_AfpInfo", "photo.afpinfo") + get("folder:AFP_Resource", "folder.rsrc")
                      + get("folder:AFP_AfpInfo", "folder.afpinfo")
                      + get("folder/" + kIconOnTheWire + ":AFP_Resource", "icon.rsrc")
                      + get("folder/" + kIconOnTheWire + ":AFP_AfpInfo", "icon.afpinfo"));
        EXPECT_NE(result.output.find("  " + kIconOnTheWire + " "), std::string::npos)
            << "the icon file is not listed as Icon U+F00D:\n" << result.output;
        EXPECT_EQ(result.output.find("._"), std::string::npos) << "a sidecar is shown as a file:\n" << result.output;

        for (const auto& item : items) {
            SCOPED_TRACE(item.name);
            const auto afpInfo = readFileBytes(out / (std::string(item.name) + ".afpinfo"));
            ASSERT_TRUE(isAfpInfo(afpInfo)) << result.output << "\nsmbd's log:\n" << smbd.logText();
            EXPECT_EQ(hexBytes(finderInfoOf(afpInfo)), hexBytes(item.ours.finderInfo));
            if (!item.hasFork)
                continue;
            const auto fork = readFileBytes(out / (std::string(item.name) + ".rsrc"));
            EXPECT_TRUE(fork == item.ours.fork)
                << "AFP_Resource has " << fork.size() << " bytes, our fork " << item.ours.fork.size() << "\n"
                << result.output;
        }
    }
}

} // namespace
} // namespace quilo::test
