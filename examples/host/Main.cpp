#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "FileError.h"
#include "Options.h"
#include "Progress.h"
#include "lum/core/utility/Collation.h"
#include "lum/core/utility/LumException.h"
#include "lum/core/utility/LumLog.h"

namespace {

constexpr int kDone = 0;
constexpr int kDataFault = 1;
constexpr int kUsageFault = 2;

void StartLibrary(bool isVerbose) {
    using namespace lum::core;
    // Strings are compared and hashed through the pool, so it comes first of all.
    RegisterDefaultCollatorPool();
    // Without a logger the library's messages are discarded: what fails is thrown as well, and
    // main() reports it. The reports name the check that failed, which helps to find a fault.
    if (isVerbose) {
        const auto accepts = [](LumLogLevel level) { return level >= LumLogLevel::Notice; };
        SetLumLogger(std::make_shared<LumLogger>(
            [accepts](LumLogLevel level, const wchar_t* message) {
                if (accepts(level)) {
                    std::cerr << "lumhost: log: " << TStringCore(message) << '\n';
                }
            },
            [accepts](LumLogLevel level, const TStringCore& message) {
                if (accepts(level)) {
                    std::cerr << "lumhost: log: " << message << '\n';
                }
            },
            accepts));
    }
    // External types would be registered here; this host has none.
}

int Fail(int status, const std::string& text) {
    std::cerr << text << std::endl;
    return status;
}

int Run(const lumhost::Options& options) {
    if (options.command == lumhost::Command::Help) {
        std::cout << options.helpText << std::flush;
        return kDone;
    }
    StartLibrary(options.isVerbose);
    lumhost::Progress progress(std::cerr, isatty(STDERR_FILENO) != 0, "Reading");
    lumhost::RunCommand(options, std::cout, progress);
    return kDone;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    std::ios::sync_with_stdio(false);
    try {
        return Run(lumhost::ParseOptions(
            std::vector<std::string>(arguments + 1, arguments + std::max(argumentCount, 1))));
    } catch (const lumhost::UsageError& error) {
        return Fail(kUsageFault, std::string("lumhost: ") + error.what());
    } catch (const lumhost::FileError& error) {
        // The file and the line come first, where editors look for them.
        return Fail(kDataFault, error.what());
    } catch (const lum::core::LumException& error) {
        return Fail(kDataFault, "lumhost: " + lumhost::MessageOf(error));
    } catch (const std::bad_alloc&) {
        return Fail(kDataFault, "lumhost: out of memory");
    } catch (const std::length_error&) {
        return Fail(kDataFault, "lumhost: the JSON text is too long; show one column of it");
    } catch (const std::exception& error) {
        return Fail(kDataFault, std::string("lumhost: ") + error.what());
    }
}
