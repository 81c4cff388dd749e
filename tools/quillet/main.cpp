// The command line of catalogs.
#include <cstdio>
#include <exception>

#include "Arguments.h"
#include "Catalog.h"
#include "Failure.h"
#include "System.h"
#include "base/CException.h"

namespace {

constexpr int Failed = 1;
constexpr int BadUsage = 2;

int Run(const std::vector<std::string>& arguments) {
    using quillet::tool::Complain;
    try {
        return quillet::tool::ParseArguments(arguments)();
    } catch (const quillet::tool::UsageError& error) {
        Complain(error.what());
        return BadUsage;
    } catch (const std::bad_alloc&) {
        Complain("memory is short");
    } catch (const std::exception& error) {
        Complain(error.what());
    } catch (quillet::CException* exception) {
        exception->Delete();
        Complain("the database failed");
    }
    return Failed;
}

}  // namespace

int main(int argc, char** argv) {
    quillet::tool::PrepareStandardStreams();
    return Run(quillet::tool::ProgramArguments(argc, argv));
}
