#include "Quillet/clv/clause.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace clv {

clause::clause() = default;

clause::clause(const clause& other) : clause() {
    *this = other;
}

clause& clause::operator=(const clause& other) {
    if (this != &other) {
        m_infix = TokensOf(other, other.m_infix);
        m_postfix = TokensOf(other, other.m_postfix);
        m_dirty = other.m_dirty;
        m_stepsStale = true;
    }
    return *this;
}

clause::~clause() = default;

void clause::expr(clv::expr* e) {
    append(e);
}

void clause::and_() {
    append(&m_and);
}

void clause::or_() {
    append(&m_or);
}

void clause::not_() {
    append(&m_not);
}

void clause::leftBracket() {
    append(&m_leftBracket);
}

void clause::rightBracket() {
    append(&m_rightBracket);
}

void clause::append(element* token) {
    m_infix.push_back(token);
    m_dirty = true;
}

void clause::clear() {
    m_infix.clear();
    m_dirty = true;
}

bool clause::IsValid() const {
    std::ptrdiff_t open = 0;
    for (element* token : m_infix) {
        if (token == nullptr) {
            return false;
        }
        if (token->type() == element::et_lbracket) {
            ++open;
        } else if (token->type() == element::et_rbracket) {
            --open;
        }
    }
    return open == 0;
}

bool clause::evaluate() {
    if (m_infix.empty()) {
        return true;
    }
    initialize();
    if (m_stepsStale) {
        BuildSteps();
    }
    if (m_steps.empty()) {
        return false;
    }
    std::size_t waiting = 0;
    for (const step& next : m_steps) {
        if (next.m_leaf != nullptr) {
            m_operands[waiting++].m_leaf = next.m_leaf;
            continue;
        }
        const clv::expr* const right = m_operands[--waiting].m_leaf;
        const clv::expr* const left = next.m_operands == 2 ? m_operands[--waiting].m_leaf : nullptr;
        operand& result = m_operands[waiting++];
        result.m_result = next.m_operator->value(right, left);
        result.m_leaf = &result.m_result;
    }
    return m_operands[waiting - 1].m_leaf->value();
}

std::string clause::GetClauseString() const {
    return BuildClauseString(m_infix);
}

std::string clause::GetRPNString() {
    initialize();
    return BuildClauseString(m_postfix);
}

bool clause::BuildRPN() {
    std::vector<element*> stack;
    const auto popToPostfix = [&] {
        m_postfix.push_back(stack.back());
        stack.pop_back();
    };
    for (element* token : m_infix) {
        if (token == nullptr) {
            m_postfix.push_back(token);
            continue;
        }
        switch (token->type()) {
            case element::et_expr:
                m_postfix.push_back(token);
                break;
            case element::et_opr:
            case element::et_not:
            case element::et_lbracket:
                stack.push_back(token);
                break;
            case element::et_rbracket:
                while (!stack.empty() && stack.back()->type() != element::et_lbracket) {
                    popToPostfix();
                }
                if (stack.empty()) {
                    m_postfix.push_back(token);
                } else {
                    stack.pop_back();
                }
                break;
            default:
                break;
        }
    }
    while (!stack.empty()) {
        popToPostfix();
    }
    m_stepsStale = true;
    return true;
}

std::string clause::BuildClauseString(const std::vector<element*>& tokens) const {
    std::string text;
    for (element* token : tokens) {
        if (token != nullptr) {
            text += text.empty() ? "" : " ";
            text += token->string();
        }
    }
    return text;
}

// Neither leaf nor operator if the token can't be evaluated.
clause::step clause::StepOf(element* token) {
    step result;
    if (token != nullptr) {
        switch (token->type()) {
            case element::et_expr:
                result.m_leaf = dynamic_cast<const clv::expr*>(token);
                break;
            case element::et_opr:
                result.m_operator = dynamic_cast<opr*>(token);
                result.m_operands = 2;
                break;
            case element::et_not:
                result.m_operator = dynamic_cast<opr*>(token);
                result.m_operands = 1;
                break;
            default:
                break;
        }
    }
    return result;
}

// The tokens of the other clause with its operators and brackets replaced by this one's.
std::vector<element*> clause::TokensOf(const clause& other, const std::vector<element*>& tokens) {
    const std::pair<const element*, element*> counterparts[] = {{&other.m_leftBracket, &m_leftBracket},
                                                                {&other.m_rightBracket, &m_rightBracket},
                                                                {&other.m_and, &m_and},
                                                                {&other.m_or, &m_or},
                                                                {&other.m_not, &m_not}};
    std::vector<element*> result(tokens);
    for (element*& token : result) {
        const auto* const found = std::find_if(std::begin(counterparts), std::end(counterparts),
                                               [&](const auto& pair) { return pair.first == token; });
        if (found != std::end(counterparts)) {
            token = found->second;
        }
    }
    return result;
}

void clause::initialize() {
    if (m_dirty) {
        BuildRPN();
        m_dirty = false;
    }
}

// Checks the postfix list once, and makes room for the largest number of operands that wait at a time.
void clause::BuildSteps() {
    m_stepsStale = false;
    m_steps.clear();
    std::size_t waiting = 0;
    std::size_t most = 0;
    for (element* token : m_postfix) {
        const step next = StepOf(token);
        if ((next.m_leaf == nullptr && next.m_operator == nullptr) || next.m_operands > waiting) {
            m_steps.clear();
            return;
        }
        waiting = waiting - next.m_operands + 1;
        most = std::max(most, waiting);
        m_steps.push_back(next);
    }
    m_operands.resize(most);
}

}  // namespace clv
