// Leaves combined by AND, OR, NOT and brackets.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Quillet/clv/element.h"

namespace clv {

// Filled once, in the order in which the condition is read, then evaluated as often as the leaves change.
//
// No operator binds stronger than another, and a chain groups from the right: "a AND b OR c" is "a AND (b OR
// c)", and "NOT a AND b" is "NOT (a AND b)". Only brackets change that. Of two operands the right one is
// evaluated first, and the left one only if the result is still open.
//
// The clause owns its operators and brackets. The leaves belong to the caller and must live as long as the
// clause is used; copies of a clause share them.
class QUILLET_API clause {
public:
    clause();
    // Has its own operators and brackets, and the same leaves.
    clause(const clause& other);
    clause& operator=(const clause& other);
    virtual ~clause();

    // Append a token. A clause that was evaluated keeps its old tokens in front, so it should not be filled
    // again.
    void expr(clv::expr* e);
    void and_();
    void or_();
    void not_();
    void leftBracket();
    void rightBracket();

    // Removes the tokens that were appended, but not those that were evaluated before.
    void clear();

    // False if a leaf is null, or if there are not as many closing brackets as opening ones. Nothing else is
    // checked: an operator that lacks an operand, or brackets the wrong way round, pass.
    bool IsValid() const;

    // The value of the clause; true if it is empty. If there are more operands than the operators take, the
    // last one counts. False, without evaluating any leaf, if an operator lacks an operand, a bracket lacks
    // its partner or a leaf is null. Only the first evaluation allocates.
    bool evaluate();

    // The tokens as they were appended, separated by blanks; a leaf is "exp".
    std::string GetClauseString() const;
    // The tokens in the order of evaluation: operators after their operands. A bracket without a partner
    // stays.
    std::string GetRPNString();

protected:
    // Appends a token of a derived class, which keeps it alive; copies share it.
    void append(element* token);

    // Adds the tokens that were appended to those in the order of evaluation, after the ones of before.
    // Always true.
    bool BuildRPN();
    std::string BuildClauseString(const std::vector<element*>& tokens) const;

private:
    // One token of the order of evaluation: a leaf, or an operator and how many operands it takes.
    struct step {
        const clv::expr* m_leaf = nullptr;
        opr* m_operator = nullptr;
        std::size_t m_operands = 0;
    };
    // An operand that waits for its operator, and room for the result of one.
    struct operand {
        const clv::expr* m_leaf = nullptr;
        clv::expr m_result;
    };

    static step StepOf(element* token);
    std::vector<element*> TokensOf(const clause& other, const std::vector<element*>& tokens);
    void initialize();
    void BuildSteps();

    bool m_dirty = true;
    std::vector<element*> m_infix;
    std::vector<element*> m_postfix;
    leftbracket m_leftBracket;
    rightbracket m_rightBracket;
    opr_and m_and;
    opr_or m_or;
    opr_not m_not;
    bool m_stepsStale = true;
    // The postfix list, checked; empty if it can't be evaluated.
    std::vector<step> m_steps;
    std::vector<operand> m_operands;
};

}  // namespace clv
