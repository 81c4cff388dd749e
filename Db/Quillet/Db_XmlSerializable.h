// The interface of objects that read and write themselves as XML.
#pragma once

#include "Quillet/platform/Automation.h"

// Both operations take automation interfaces of an XML document object model: our own documents' or any
// other's. A foreign one may fail by throwing anything: that is a failure like any other and gives false.
// Only our own std::bad_alloc is thrown.
class QUILLET_API DbXmlSerializable {
public:
    // Appends this object's element or elements under parentElement, made through document. False when the
    // document fails; what was appended until then may stay.
    virtual bool Save(IDispatch* document, IDispatch* parentElement) = 0;
    // Reads this object from the element. False when the document fails; what was read until then stays.
    virtual bool Load(IDispatch* element) = 0;

protected:
    DbXmlSerializable() = default;
    DbXmlSerializable(const DbXmlSerializable&) {}
    DbXmlSerializable& operator=(const DbXmlSerializable&) { return *this; }
    ~DbXmlSerializable() = default;
};
