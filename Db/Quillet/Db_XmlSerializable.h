// What reads and writes itself as XML.
#pragma once

#include "platform/Automation.h"

// Both operations take automation interfaces of an XML document object model: our own documents' or any
// other's.
class QUILLET_API DbXmlSerializable {
public:
    // Appends this object's element or elements under parentElement, made through document. False when the
    // document refuses; what was appended until then may stay.
    virtual bool Save(IDispatch* document, IDispatch* parentElement) = 0;
    // Reads this object from the element. False when the document refuses; what was read until then stays.
    virtual bool Load(IDispatch* element) = 0;

protected:
    DbXmlSerializable() = default;
    DbXmlSerializable(const DbXmlSerializable&) {}
    DbXmlSerializable& operator=(const DbXmlSerializable&) { return *this; }
    ~DbXmlSerializable() = default;
};
