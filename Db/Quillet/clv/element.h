// The tokens of a boolean clause: leaves, operators and brackets.
#pragma once

#include <cstdint>

#include "Quillet/platform/Export.h"

namespace clv {

// A token of a clause.
class QUILLET_API element {
public:
    // How a clause treats a token. Only an expr may be et_expr, and only an opr may be et_opr or et_not.
    enum etype : std::int32_t { et_expr = 0, et_opr = 1, et_not = 2, et_lbracket = 3, et_rbracket = 4 };

    virtual ~element();
    // The token as GetClauseString shows it.
    virtual const char* string() = 0;
    virtual etype type() = 0;
};

// A leaf: true or false, as set before each evaluation.
class QUILLET_API expr : public element {
public:
    expr();
    expr(bool value);
    expr(const expr& other);
    expr& operator=(const expr& other);
    expr& operator=(bool value);
    ~expr() override;

    const char* string() override;
    etype type() override;
    virtual bool value() const;

private:
    bool m_value = false;
};

// An operator on two operands. It gets them unevaluated, so that it need not evaluate both.
class QUILLET_API opr : public element {
public:
    ~opr() override;
    etype type() override;
    virtual bool value(const expr* a, const expr* b) = 0;
};

// False without evaluating b if a is false. A missing operand is false.
class QUILLET_API opr_and : public opr {
public:
    ~opr_and() override;
    const char* string() override;
    bool value(const expr* a, const expr* b) override;
};

// True without evaluating b if a is true. A missing operand is false.
class QUILLET_API opr_or : public opr {
public:
    ~opr_or() override;
    const char* string() override;
    bool value(const expr* a, const expr* b) override;
};

// The opposite of a, whatever b is; false if a is missing.
class QUILLET_API opr_not : public opr {
public:
    ~opr_not() override;
    const char* string() override;
    etype type() override;
    bool value(const expr* a, const expr* b) override;
};

class QUILLET_API leftbracket : public element {
public:
    ~leftbracket() override;
    const char* string() override;
    etype type() override;
};

class QUILLET_API rightbracket : public element {
public:
    ~rightbracket() override;
    const char* string() override;
    etype type() override;
};

}  // namespace clv
