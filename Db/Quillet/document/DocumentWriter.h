// Writes the catalog document.
#pragma once

#include "Quillet/base/CString.h"
#include "Quillet/xml/Node.h"

namespace quillet {

class Log;
class Registry;

class DocumentWriter {
public:
    DocumentWriter(Registry& registry, Log& log) : m_registry(registry), m_log(log) {}

    // Appends the <database> element to parent, or to the document when parent is null. False when a table
    // failed, with a line in the log for each. Throws xml::DomError when the document refuses.
    bool Write(const xml::Node& document, const xml::Node& parent);

    // The line about the last table that failed.
    const CString& LastFailure() const { return m_lastFailure; }

private:
    struct Section;

    bool WriteSection(const xml::Node& document, const xml::Node& parent, const Section& section);

    Registry& m_registry;
    Log& m_log;
    CString m_lastFailure;
};

}  // namespace quillet
