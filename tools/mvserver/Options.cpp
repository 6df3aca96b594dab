#include "Options.h"

#include <CLI/CLI.hpp>

#include <cctype>
#include <cstdint>
#include <stdexcept>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

template <class T>
CLI::Option& added(CLI::App& app, const std::string& names, T& value, const std::string& type,
                   const std::string& help) {
    return *app.add_option(names, value, help)->type_name(type)->envname(variableOf(names));
}

// The parser would pass on what its conversion throws.
std::string whatIsWrongWithFlag(const std::string& value) {
    try {
        CLI::detail::to_flag_value(value);
        return "";
    } catch (const std::invalid_argument&) {
        return "\"" + value + "\" is neither true nor false";
    }
}

}  // namespace

std::string variableOf(const std::string& names) {
    const std::size_t start = names.find("--") + 2;
    std::string variable = "MV_";
    for (std::size_t i = start; i < names.size() && names[i] != ','; ++i) {
        const auto c = static_cast<unsigned char>(names[i]);
        variable += c == '-' ? '_' : static_cast<char>(std::toupper(c));
    }
    return variable;
}

Option& Option::required() {
    m_option->required();
    return *this;
}

Option& Option::excludes(const Option& other) {
    m_option->excludes(other.m_option);
    return *this;
}

Option& Option::variable(const std::string& name) {
    m_option->envname(name);
    return *this;
}

Option& Option::group(const std::string& title) {
    m_option->group(title);
    return *this;
}

Option& Option::notEmpty() {
    m_option->check([](const std::string& text) {
        return std::string(text.empty() ? "it is given without a text" : "");
    });
    return *this;
}

Option& Option::between(double least, double most) {
    CLI::Range range(least, most);
    m_option->check(range.description(""));
    return *this;
}

Option& Option::oneOf(std::initializer_list<const char*> values) {
    m_option->check(CLI::IsMember(std::vector<std::string>(values.begin(), values.end())));
    return *this;
}

Verb Verb::verb(const std::string& name, const std::string& help) {
    return Verb(*m_app->add_subcommand(name, help));
}

void Verb::needsVerb() {
    m_app->require_subcommand(1);
}

Option Verb::flag(const std::string& names, bool& value, const std::string& help) {
    return Option(*m_app->add_flag(names, value, help)->envname(variableOf(names)));
}

Option Verb::flag(const std::string& names, std::optional<bool>& value, const std::string& help) {
    const auto set = [&value](std::int64_t count) { value = count > 0; };
    return Option(*m_app->add_flag_function(names, set, help)
                       ->envname(variableOf(names))
                       ->check(whatIsWrongWithFlag));
}

Option Verb::counter(const std::string& names, int& value, const std::string& help) {
    return Option(*m_app->add_flag(names, value, help)->envname(variableOf(names)));
}

Option Verb::text(const std::string& names, std::string& value, const std::string& type,
                  const std::string& help) {
    return Option(added(*m_app, names, value, type, help)).notEmpty();
}

Option Verb::texts(const std::string& names, std::vector<std::string>& values,
                   const std::string& type, const std::string& help) {
    return Option(*added(*m_app, names, values, type, help).expected(1)->take_all());
}

Option Verb::number(const std::string& names, int& value, const std::string& type,
                    const std::string& help) {
    return Option(added(*m_app, names, value, type, help));
}

Option Verb::number(const std::string& names, double& value, const std::string& type,
                    const std::string& help) {
    return Option(added(*m_app, names, value, type, help));
}

Option Verb::argument(const std::string& name, std::string& value, const std::string& type,
                      const std::string& help) {
    return Option(*m_app->add_option(name, value, help)->type_name(type)->required());
}

Option Verb::arguments(const std::string& name, std::vector<std::string>& values,
                       const std::string& type, const std::string& help) {
    return Option(*m_app->add_option(name, values, help)->type_name(type)->required());
}

void Verb::whenChosen(std::function<void()> action) {
    m_app->callback(std::move(action));
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
