// What the hub does with XML documents.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

// Counts what is in the document:
//
//     <?xml version="1.0" encoding="UTF-8"?>
//     <summary root="order" elements="3" attributes="1" depth="2" text="7">
//       <element name="item" count="2" />
//       <element name="order" count="1" />
//     </summary>
//
// "depth" counts the levels of elements, "text" the bytes of text in UTF-8; the names are in byte
// order. Throws Refusal with 400, line and column when the text is no XML document.
std::string summarizeXml(const std::string& document);

// The same document with the children of every element in reverse order; comments, processing
// instructions, the document type and white space between elements are left out. Throws as
// summarizeXml().
std::string reverseXml(const std::string& document);

}  // namespace Morvenn::Net::MvServerProxy::Hub
