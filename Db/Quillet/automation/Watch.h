// What a wrapper shows, as long as it lives.
#pragma once

#include <memory>
#include <utility>

#include "Quillet/automation/MethodFailure.h"

class DbDatabase;

namespace quillet::automation {

// An object of the model that others own, watched by its token, or nothing.
template <typename Model, typename Token = std::shared_ptr<Model*>>
class Watch {
public:
    Watch() = default;
    // Nothing for a null token.
    explicit Watch(Token token) : m_token(std::move(token)), m_shows(Shown(m_token) != nullptr) {}

    // Whether it had nothing to show from the beginning.
    bool IsUnset() const { return !m_shows; }
    // Null if it shows nothing, and once the object is gone.
    Model* Get() const { return Shown(m_token); }
    // Throws MethodFailure if there is no object.
    Model& operator*() const {
        Model* const model = Get();
        if (model == nullptr) {
            throw MethodFailure{CO_E_OBJNOTCONNECTED,
                                m_shows ? "What the object showed is gone" : "The object shows nothing"};
        }
        return *model;
    }
    Model* operator->() const { return &**this; }

private:
    static Model* Shown(const std::shared_ptr<Model*>& token) { return token == nullptr ? nullptr : *token; }
    static Model* Shown(const std::weak_ptr<Model*>& token) { return Shown(token.lock()); }

    Token m_token;
    bool m_shows = false;
};

// The token of a database dies with it.
using WatchedDatabase = Watch<DbDatabase, std::weak_ptr<DbDatabase*>>;

}  // namespace quillet::automation
