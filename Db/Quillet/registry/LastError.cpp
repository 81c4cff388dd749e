#include "Quillet/registry/LastError.h"

#include <array>
#include <exception>
#include <new>

#include "Quillet/base/CException.h"
#include "Quillet/xml/Node.h"

namespace quillet {

namespace {

CString TextOf(const CException& exception) {
    std::array<WCHAR, 512> text{};
    exception.GetErrorMessage(text.data(), static_cast<unsigned int>(text.size()), nullptr);
    CString line(text.data());
    line.Replace("\r\n", "; ");
    return line;
}

// The text of the exception that is being handled; rethrows std::bad_alloc.
CString TextOfCurrentException() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const CException* exception) {
        return TextOf(*exception);
    } catch (const xml::DomError& error) {
        return CString(error.m_message);
    } catch (const std::exception& error) {
        return CString(error.what());
    } catch (...) {
        return "unknown error";
    }
}

}  // namespace

void LastError::Clear() noexcept {
    m_entry = DbLogEntry();
    m_isOutOfMemory = false;
}

void LastError::Set(const DbLogEntry& entry) noexcept {
    Clear();
    try {
        m_entry = entry;
    } catch (const std::bad_alloc&) {
        m_isOutOfMemory = true;
    }
}

void LastError::Set(const CString& text) noexcept {
    Clear();
    try {
        m_entry = {m_kind, text};
    } catch (const std::bad_alloc&) {
        m_isOutOfMemory = true;
    }
}

void LastError::SetToCurrentException() noexcept {
    Clear();
    try {
        m_entry = {m_kind, TextOfCurrentException()};
    } catch (const std::bad_alloc&) {
        m_isOutOfMemory = true;
    }
}

DbLogEntry LastError::Entry() const {
    return m_isOutOfMemory ? DbLogEntry{m_kind, OutOfMemory} : m_entry;
}

}  // namespace quillet
