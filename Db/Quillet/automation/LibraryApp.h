// The application object of a library: its start, its end, and whether it is in use.
#pragma once

#include <atomic>

#include "Quillet/base/CString.h"
#include "Quillet/platform/Automation.h"

namespace quillet::automation {

// One for each process that has the library loaded. May be asked from any thread.
class LibraryApp {
public:
    LibraryApp() = default;
    LibraryApp(const LibraryApp&) = delete;
    LibraryApp& operator=(const LibraryApp&) = delete;
    virtual ~LibraryApp() = default;

    // The library is loaded; false refuses.
    bool Start(HINSTANCE instance);
    // The library is about to be unloaded.
    void End() { ExitInstance(); }

    HINSTANCE Instance() const { return m_instance; }
    // The path of the library's file. Throws MethodFailure if the system does not say.
    CString Path() const;

    // Objects that clients hold; the last one releases what was kept for all.
    void ObjectMade() { ++m_objects; }
    void ObjectGone();
    bool IsInUse() const { return m_objects != 0; }

protected:
    virtual bool InitInstance() { return true; }
    virtual int ExitInstance() { return 0; }

private:
    HINSTANCE m_instance = nullptr;
    std::atomic<long> m_objects = 0;
};

// The library's own.
LibraryApp& App();

// Counts the object that it is part of.
class InUse {
public:
    InUse() { App().ObjectMade(); }
    InUse(const InUse&) = delete;
    InUse& operator=(const InUse&) = delete;
    ~InUse() { App().ObjectGone(); }
};

}  // namespace quillet::automation
