#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quilo::cli {

// A command's arguments: positionals in order, "--name value" options, and
// "--flag" switches. Each command says which options and flags it takes.
struct Arguments {
    std::vector<std::string> positionals;
    std::map<std::string, std::string> options;
    std::set<std::string> flags;

    std::optional<std::string> option(const std::string& name) const;
    bool flag(const std::string& name) const { return flags.count(name) != 0; }
};

struct AcceptedArguments {
    std::set<std::string> options; // take a value
    std::set<std::string> flags;   // take none
};

// Parses argv after the command name. On a malformed line returns nullopt and
// sets `error` to a sentence for the user.
std::optional<Arguments> parseArguments(const std::vector<std::string>& words, const AcceptedArguments& accepted,
                                        std::string& error);

} // namespace quilo::cli
