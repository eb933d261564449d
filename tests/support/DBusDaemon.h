#pragma once

// A message bus of the test's own: dbus-daemon listening in a temporary
// folder, with a configuration that starts no services, so nothing of the
// machine's answers on it. Gone with the object.
#include "tests/support/Files.h"
#include "tests/support/ServerProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <memory>
#include <string>

namespace quilo::test {

class DBusDaemon {
public:
    DBusDaemon()
    {
        const std::string config = (folder_ / "bus.conf").string();
        writeFileText(config, "<busconfig>\n"
                              "  <type>session</type>\n"
                              "  <listen>unix:path=" + (folder_ / "bus").string() + "</listen>\n"
                              "  <policy context=\"default\">\n"
                              "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
                              "    <allow eavesdrop=\"true\"/>\n"
                              "    <allow own=\"*\"/>\n"
                              "  </policy>\n"
                              "</busconfig>\n");
        server_ = std::make_unique<ServerProcess>(std::vector<std::string>{
            "dbus-daemon", "--config-file=" + config, "--nofork", "--print-address={fd}"});
    }

    // Printed once the bus accepts connections.
    const std::string& address() const { return server_->line(); }

private:
    TemporaryDirectory folder_;
    std::unique_ptr<ServerProcess> server_;
};

} // namespace quilo::test
