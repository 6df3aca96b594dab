// Declaring verbs and options. A layer over CLI11 that keeps its header, which takes long to
// compile, in few places, and gives every option its environment variable.
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Morvenn::Net::MvServerProxy::Tools {

// The variable of an option: "--log-dir" may come from MV_LOG_DIR. `names` is "--long" or
// "-s,--long".
std::string variableOf(const std::string& names);

class Option {
public:
    explicit Option(CLI::Option& option) : m_option(&option) {}

    Option& required();
    Option& excludes(const Option& other);
    // Another variable than the one that its name gives.
    Option& variable(const std::string& name);
    Option& group(const std::string& title);
    // Refuses an empty text, such as a shell's variable that is not set.
    Option& notEmpty();
    Option& between(double least, double most);
    Option& oneOf(std::initializer_list<const char*> values);

private:
    CLI::Option* m_option;
};

// A verb, or the program itself. `value` must live as long as the command line is parsed; it keeps
// what it holds when the option is not given. `type` is what --help shows for the value.
class Verb {
public:
    explicit Verb(CLI::App& app) : m_app(&app) {}

    Verb verb(const std::string& name, const std::string& help);
    // Requires one of the verbs below.
    void needsVerb();

    Option flag(const std::string& names, bool& value, const std::string& help);
    Option flag(const std::string& names, std::optional<bool>& value, const std::string& help);
    Option counter(const std::string& names, int& value, const std::string& help);
    // Not empty when it is given.
    Option text(const std::string& names, std::string& value, const std::string& type,
                const std::string& help);
    // May be repeated.
    Option texts(const std::string& names, std::vector<std::string>& values,
                 const std::string& type, const std::string& help);
    Option number(const std::string& names, int& value, const std::string& type,
                  const std::string& help);
    Option number(const std::string& names, double& value, const std::string& type,
                  const std::string& help);
    Option argument(const std::string& name, std::string& value, const std::string& type,
                    const std::string& help);
    Option arguments(const std::string& name, std::vector<std::string>& values,
                     const std::string& type, const std::string& help);

    // What to do when this verb is on the command line; called once that is parsed.
    void whenChosen(std::function<void()> action);

    CLI::App& app() const { return *m_app; }

private:
    CLI::App* m_app;
};

}  // namespace Morvenn::Net::MvServerProxy::Tools
