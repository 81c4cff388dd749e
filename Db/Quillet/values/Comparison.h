// How the operators of conditions compare.
#pragma once

#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CString.h"

namespace quillet {

using Comparison = bool (*)(const CComVariant& left, const CComVariant& right);

enum class Operator { None, Less, LessOrEqual, Equal, GreaterOrEqual, Greater, NotEqual };

// The comparison for one of the operators <, <=, =, ==, >=, >, != and <>, where a field is a text or none is
// (DbTableDescr::AddFilter says how it compares); null for another operator.
Comparison ComparisonOf(const CString& op, bool texts);

// The operator that a comparison is for; None for null.
Operator OperatorOf(Comparison comparison);

// Whether the operator is = or ==.
bool IsEquality(const CString& op);

}  // namespace quillet
