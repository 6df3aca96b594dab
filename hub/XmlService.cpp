#include "XmlService.h"

#include "Refusal.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstring>
#include <map>
#include <sstream>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

[[noreturn]] void refuse(const std::string& document, const pugi::xml_parse_result& result) {
    const std::size_t offset = std::min(
        static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0)), document.size());
    const auto begin = document.begin();
    const auto at = begin + static_cast<std::ptrdiff_t>(offset);
    const auto line = 1 + std::count(begin, at, '\n');
    const std::size_t lineBegin =
        offset == 0 ? std::string::npos : document.rfind('\n', offset - 1);
    const std::size_t column = offset - (lineBegin == std::string::npos ? 0 : lineBegin + 1) + 1;
    throw Refusal(400, "the body is no XML document: line " + std::to_string(line) + ", column " +
                           std::to_string(column) + ": " + result.description());
}

// No external entity is ever loaded and none is expanded: the parser knows the five named ones
// only.
void parse(const std::string& document, pugi::xml_document& parsed) {
    const auto result = parsed.load_buffer(document.data(), document.size());
    if (!result) {
        refuse(document, result);
    }
}

std::string printed(const pugi::xml_document& document, unsigned format) {
    std::ostringstream text;
    document.save(text, "  ", format, pugi::encoding_utf8);
    return text.str();
}

class Counter : public pugi::xml_tree_walker {
public:
    bool for_each(pugi::xml_node& node) override {
        if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
            m_text += std::strlen(node.value());
        }
        if (node.type() != pugi::node_element) {
            return true;
        }
        ++m_elements;
        ++m_names[node.name()];
        m_depth = std::max(m_depth, depth() + 1);
        const auto attributes = node.attributes();
        m_attributes += std::distance(attributes.begin(), attributes.end());
        return true;
    }

    void writeTo(pugi::xml_node summary) const {
        summary.append_attribute("elements") = m_elements;
        summary.append_attribute("attributes") = static_cast<long long>(m_attributes);
        summary.append_attribute("depth") = m_depth;
        summary.append_attribute("text") = static_cast<unsigned long long>(m_text);
        for (const auto& [name, count] : m_names) {
            pugi::xml_node element = summary.append_child("element");
            element.append_attribute("name") = name.c_str();
            element.append_attribute("count") = count;
        }
    }

private:
    long long m_elements = 0;
    std::ptrdiff_t m_attributes = 0;
    int m_depth = 0;
    std::size_t m_text = 0;
    std::map<std::string, long long> m_names;
};

// An element still to be copied, and the element that stands for it in the copy.
struct OpenElement {
    pugi::xml_node from;
    pugi::xml_node to;
};

// Copies the children of one element in reverse order, those of its own children not yet.
void copyChildrenReversed(OpenElement element, std::vector<OpenElement>& open) {
    for (pugi::xml_node child = element.from.last_child(); child;
         child = child.previous_sibling()) {
        pugi::xml_node copy = element.to.append_child(child.type());
        copy.set_name(child.name());
        copy.set_value(child.value());
        for (const pugi::xml_attribute attribute : child.attributes()) {
            copy.append_attribute(attribute.name()) = attribute.value();
        }
        if (child.first_child()) {
            open.push_back({child, copy});
        }
    }
}

void addDeclaration(pugi::xml_document& document) {
    pugi::xml_node declaration = document.prepend_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
}

}  // namespace

std::string summarizeXml(const std::string& document) {
    pugi::xml_document parsed;
    parse(document, parsed);
    Counter counter;
    parsed.traverse(counter);
    pugi::xml_document result;
    addDeclaration(result);
    pugi::xml_node summary = result.append_child("summary");
    summary.append_attribute("root") = parsed.document_element().name();
    counter.writeTo(summary);
    return printed(result, pugi::format_indent);
}

std::string reverseXml(const std::string& document) {
    pugi::xml_document parsed;
    parse(document, parsed);
    pugi::xml_document result;
    addDeclaration(result);
    // A list of what is still to do instead of recursion: depth is the client's choice.
    std::vector<OpenElement> open = {{parsed.root(), result.root()}};
    while (!open.empty()) {
        const OpenElement element = open.back();
        open.pop_back();
        copyChildrenReversed(element, open);
    }
    return printed(result, pugi::format_raw);
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
