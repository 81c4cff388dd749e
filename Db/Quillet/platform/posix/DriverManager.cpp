// For some drivers unixODBC converts texts to the character set of the locale in which the connection's
// handle was made, and cuts characters that the set lacks to their lowest byte. A thread locale set for that
// time leaves the locale of the process alone. A narrow connect string goes to the driver as it is.
#include "Quillet/platform/DriverManager.h"

#include <cerrno>
#include <clocale>
#include <new>

namespace quillet::platform {
namespace {

class Utf8Locale {
public:
    Utf8Locale() : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
        if (m_locale != nullptr) {
            m_before = uselocale(m_locale);
        } else if (errno == ENOMEM) {
            throw std::bad_alloc();
        }
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;
    ~Utf8Locale() {
        if (m_locale != nullptr) {
            uselocale(m_before);
            freelocale(m_locale);
        }
    }

private:
    locale_t m_locale;
    locale_t m_before = nullptr;
};

}  // namespace

std::string DriverPath(const std::string& path) {
    return path;
}

void WithConnectionLocale(const std::function<void()>& make) {
    const Utf8Locale locale;
    make();
}

SQLRETURN ConnectDriver(SQLHDBC connection, const std::string& connectString, SQLUSMALLINT completion) {
    std::string text = connectString;
    return SQLDriverConnect(connection, nullptr, reinterpret_cast<SQLCHAR*>(text.data()),
                            static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr, completion);
}

}  // namespace quillet::platform
