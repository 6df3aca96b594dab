#include "CompletionScripts.h"

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

std::string parentOf(const std::string& path) {
    const std::size_t blank = path.rfind(' ');
    return blank == std::string::npos ? "" : path.substr(0, blank);
}

std::string lastWord(const std::string& path) {
    const std::size_t blank = path.rfind(' ');
    return blank == std::string::npos ? path : path.substr(blank + 1);
}

CompletedVerbs below(const CompletedVerbs& verbs, const std::string& path) {
    CompletedVerbs children;
    for (const CompletedVerb& verb : verbs) {
        if (!verb.path.empty() && parentOf(verb.path) == path) {
            children.push_back(verb);
        }
    }
    return children;
}

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
    std::string all;
    for (const std::string& word : words) {
        all += (all.empty() ? "" : separator) + word;
    }
    return all;
}

std::string childNames(const CompletedVerbs& verbs, const std::string& path) {
    std::vector<std::string> names;
    for (const CompletedVerb& verb : below(verbs, path)) {
        names.push_back(lastWord(verb.path));
    }
    return joined(names, " ");
}

// In single quotes, for any of the three shells.
std::string quoted(const std::string& text, const std::string& quoteInside) {
    std::string result = "'";
    for (const char c : text) {
        result += c == '\'' ? quoteInside : std::string(1, c);
    }
    return result + "'";
}

// 'name:description' as zsh's _describe takes it.
std::string described(const std::string& name, const std::string& help) {
    std::string escapedName;
    for (const char c : name) {
        escapedName += c == ':' ? "\\:" : std::string(1, c);
    }
    return quoted(escapedName + ":" + help, "'\\''");
}

std::string allPaths(const CompletedVerbs& verbs) {
    std::vector<std::string> paths;
    for (const CompletedVerb& verb : verbs) {
        if (!verb.path.empty()) {
            paths.push_back("'" + verb.path + "'");
        }
    }
    return joined(paths, "|");
}

}  // namespace

std::string bashCompletion(const CompletedVerbs& verbs) {
    std::string cases;
    for (const CompletedVerb& verb : verbs) {
        std::vector<std::string> names;
        for (const CompletedOption& option : verb.options) {
            names.insert(names.end(), option.names.begin(), option.names.end());
        }
        cases += "        '" + verb.path + "')\n            verbs='" +
                 childNames(verbs, verb.path) + "'\n            options='" + joined(names, " ") +
                 "' ;;\n";
    }
    return "# bash completion for mvserver, written by 'mvserver completion bash'\n"
           "_mvserver() {\n"
           "    local word path= verbs= options= cur=${COMP_WORDS[COMP_CWORD]}\n"
           "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           "        case \"${path:+$path }$word\" in\n"
           "            " +
           allPaths(verbs) +
           ")\n"
           "                path=\"${path:+$path }$word\" ;;\n"
           "        esac\n"
           "    done\n"
           "    case \"$path\" in\n" +
           cases +
           "    esac\n"
           "    if [[ $cur == -* ]]; then\n"
           "        COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n"
           "    else\n"
           "        COMPREPLY=($(compgen -W \"$verbs\" -- \"$cur\"))\n"
           "    fi\n"
           "}\n"
           "complete -o default -F _mvserver mvserver\n";
}

std::string zshCompletion(const CompletedVerbs& verbs) {
    std::string cases;
    for (const CompletedVerb& verb : verbs) {
        cases += "        ('" + verb.path + "')\n            verbs=(";
        for (const CompletedVerb& child : below(verbs, verb.path)) {
            cases += "\n                " + described(lastWord(child.path), child.help);
        }
        cases += ")\n            options=(";
        for (const CompletedOption& option : verb.options) {
            for (const std::string& name : option.names) {
                cases += "\n                " + described(name, option.help);
            }
        }
        cases += ") ;;\n";
    }
    return "#compdef mvserver\n"
           "# zsh completion for mvserver, written by 'mvserver completion zsh'\n"
           "_mvserver() {\n"
           "    local word verb_path=''\n"
           "    local -a verbs options\n"
           "    for word in \"${(@)words[2,CURRENT-1]}\"; do\n"
           "        case \"${verb_path:+$verb_path }$word\" in\n"
           "            (" +
           allPaths(verbs) +
           ")\n"
           "                verb_path=\"${verb_path:+$verb_path }$word\" ;;\n"
           "        esac\n"
           "    done\n"
           "    case \"$verb_path\" in\n" +
           cases +
           "    esac\n"
           "    if [[ $PREFIX == -* ]]; then\n"
           "        _describe -o option options\n"
           "    elif (( $#verbs )); then\n"
           "        _describe verb verbs\n"
           "    else\n"
           "        _files\n"
           "    fi\n"
           "}\n"
           "_mvserver \"$@\"\n";
}

std::string fishCompletion(const CompletedVerbs& verbs) {
    std::string script =
        "# fish completion for mvserver, written by 'mvserver completion fish'\n"
        "# The verbs typed so far, options left out, are \"$argv\".\n"
        "function __mvserver_at\n"
        "    set -l path\n"
        "    for word in (commandline -opc)[2..-1]\n"
        "        switch (string join ' ' $path $word)\n"
        "            case " +
        [&verbs] {
            std::string paths = allPaths(verbs);
            for (char& c : paths) {
                c = c == '|' ? ' ' : c;
            }
            return paths;
        }() +
        "\n"
        "                set -a path $word\n"
        "        end\n"
        "    end\n"
        "    test (string join ' ' $path) = \"$argv\"\n"
        "end\n";
    for (const CompletedVerb& verb : verbs) {
        const std::string where = "complete -c mvserver -n '__mvserver_at " + verb.path + "'";
        for (const CompletedVerb& child : below(verbs, verb.path)) {
            script += where + " -f -a " + lastWord(child.path) + " -d " +
                      quoted(child.help, "\\'") + "\n";
        }
        for (const CompletedOption& option : verb.options) {
            script += where;
            for (const std::string& name : option.names) {
                const bool isLong = name.compare(0, 2, "--") == 0;
                script += isLong ? " -l " + name.substr(2) : " -s " + name.substr(1);
            }
            script += std::string(option.takesValue ? " -r" : "") + " -d " +
                      quoted(option.help, "\\'") + "\n";
        }
    }
    return script;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
