#include "Quillet/odbc/FieldExchange.h"

namespace quillet::odbc {

FieldExchange::~FieldExchange() = default;

}  // namespace quillet::odbc
