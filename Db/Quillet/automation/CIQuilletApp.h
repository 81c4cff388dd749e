// The application object of IQuillet.dll.
#pragma once

#include "Quillet/automation/LibraryApp.h"

// Starts the proxies' part before its own.
class CIQuilletApp final : public quillet::automation::LibraryApp {
protected:
    bool InitInstance() override;
    int ExitInstance() override;
};
