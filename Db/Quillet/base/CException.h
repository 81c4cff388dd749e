// Exceptions thrown by pointer: the catcher reads the text and deletes the object.
#pragma once

#include "Quillet/platform/Automation.h"

namespace quillet {

class CArchive;
class CDumpContext;

// Names a class at run time.
struct CRuntimeClass {
    const char* m_className;
    const CRuntimeClass* m_baseClass;
};

// Root of the run-time-typed objects.
class QUILLET_API CObject {
public:
    static const CRuntimeClass classCObject;

    virtual const CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject();
    virtual void Serialize(CArchive& archive);
    virtual void AssertValid() const;
    virtual void Dump(CDumpContext& context) const;

    // Whether the object is of the class or of one derived from it.
    bool IsKindOf(const CRuntimeClass* classOf) const;

protected:
    CObject();
    CObject(const CObject& other);
    CObject& operator=(const CObject& other);
};

// Base of everything thrown by pointer.
class QUILLET_API CException : public CObject {
public:
    static const CRuntimeClass classCException;

    CException();
    CException(const CException& other);
    CException& operator=(const CException& other);
    ~CException() override;

    const CRuntimeClass* GetRuntimeClass() const override;

    // Copies the message into buffer (capacity counts characters, including the terminating zero) and stores
    // a help context of 0 if one is asked for. Returns 1, or 0 if there is no message.
    virtual int GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext);
    virtual int GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) const;

    // Shows the message in a message box. Returns the button: always OK, 1.
    virtual int ReportError();

    // Deletes the object.
    void Delete();
};

// Out of memory.
class QUILLET_API CMemoryException : public CException {
public:
    static const CRuntimeClass classCMemoryException;
    const CRuntimeClass* GetRuntimeClass() const override;
    using CException::GetErrorMessage;
    int GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) const override;
};

// An argument is out of its range.
class QUILLET_API CInvalidArgException : public CException {
public:
    static const CRuntimeClass classCInvalidArgException;
    const CRuntimeClass* GetRuntimeClass() const override;
    using CException::GetErrorMessage;
    int GetErrorMessage(WCHAR* buffer, unsigned int capacity, unsigned int* helpContext) const override;
};

}  // namespace quillet

#if !defined(QUILLET_NO_GLOBAL_NAMES)
using quillet::CException;
using quillet::CInvalidArgException;
using quillet::CMemoryException;
using quillet::CObject;
using quillet::CRuntimeClass;
#endif
