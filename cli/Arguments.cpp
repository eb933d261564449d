#include "cli/Arguments.h"

namespace quilo::cli {

std::optional<std::string> Arguments::option(const std::string& name) const
{
    const auto found = options.find(name);
    if (found == options.end())
        return std::nullopt;
    return found->second;
}

std::optional<Arguments> parseArguments(const std::vector<std::string>& words, const AcceptedArguments& accepted,
                                        std::string& error)
{
    Arguments arguments;
    bool onlyPositionals = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (onlyPositionals || word.size() < 2 || word.rfind("--", 0) != 0) {
            arguments.positionals.push_back(word);
            continue;
        }
        if (word == "--") {
            onlyPositionals = true;
            continue;
        }
        std::string name = word.substr(2);
        std::optional<std::string> value;
        if (const auto equals = name.find('='); equals != std::string::npos) {
            value = name.substr(equals + 1);
            name.resize(equals);
        }
        if (accepted.flags.count(name) && !value) {
            arguments.flags.insert(name);
        } else if (accepted.options.count(name)) {
            if (!value) {
                if (i + 1 >= words.size()) {
                    error = "option --" + name + " needs a value";
                    return std::nullopt;
                }
                value = words[++i];
            }
            arguments.options[name] = *value;
        } else {
            error = "unknown option --" + name;
            return std::nullopt;
        }
    }
    return arguments;
}

} // namespace quilo::cli
