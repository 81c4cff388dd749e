#include "Quillet/Db_QueryAnalysisParams.h"

namespace parser {

QueryAnalysisParams::QueryAnalysisParams() : clause(std::make_unique<clv::clause>()) {
}

QueryAnalysisParams::~QueryAnalysisParams() = default;

}  // namespace parser
