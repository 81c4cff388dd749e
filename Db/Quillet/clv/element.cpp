#include "Quillet/clv/element.h"

namespace clv {

namespace {

bool IsTrue(const expr* operand) {
    return operand != nullptr && operand->value();
}

}  // namespace

element::~element() = default;

expr::expr() = default;

expr::expr(bool value) : m_value(value) {
}

expr::expr(const expr& other) = default;

expr& expr::operator=(const expr& other) = default;

expr& expr::operator=(bool value) {
    m_value = value;
    return *this;
}

expr::~expr() = default;

const char* expr::string() {
    return "exp";
}

element::etype expr::type() {
    return et_expr;
}

bool expr::value() const {
    return m_value;
}

opr::~opr() = default;

element::etype opr::type() {
    return et_opr;
}

opr_and::~opr_and() = default;

const char* opr_and::string() {
    return "AND";
}

bool opr_and::value(const expr* a, const expr* b) {
    return IsTrue(a) && IsTrue(b);
}

opr_or::~opr_or() = default;

const char* opr_or::string() {
    return "OR";
}

bool opr_or::value(const expr* a, const expr* b) {
    return IsTrue(a) || IsTrue(b);
}

opr_not::~opr_not() = default;

const char* opr_not::string() {
    return "NOT";
}

element::etype opr_not::type() {
    return et_not;
}

bool opr_not::value(const expr* a, const expr*) {
    return a != nullptr && !a->value();
}

leftbracket::~leftbracket() = default;

const char* leftbracket::string() {
    return "(";
}

element::etype leftbracket::type() {
    return et_lbracket;
}

rightbracket::~rightbracket() = default;

const char* rightbracket::string() {
    return ")";
}

element::etype rightbracket::type() {
    return et_rbracket;
}

}  // namespace clv
