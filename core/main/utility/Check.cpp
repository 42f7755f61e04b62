#include "lum/core/Check.h"

#include <string>
#include <string_view>

#include "lum/core/utility/LumLog.h"

namespace lum::core::detail {
namespace {

/// A source path as reports name it: from "core/" on, without extension. The last of our folders in
/// it decides, since a checkout may itself stand below folders of these names; a header that was
/// installed lost the folders above "lum/core/".
std::string ReportPath(std::string_view file) {
    file = file.substr(0, file.rfind('.'));
    std::size_t start = std::string_view::npos;
    for (const std::string_view root :
         {"core/main/", "core/public/", "core/_gen_private/", "core/_gen/"}) {
        const std::size_t at = file.rfind(root);
        const bool isFolder = at != std::string_view::npos && (at == 0 || file[at - 1] == '/');
        if (isFolder && (start == std::string_view::npos || at > start)) {
            start = at;
        }
    }
    if (start != std::string_view::npos) {
        return std::string(file.substr(start));
    }
    const std::size_t installed = file.rfind("lum/core/");
    return installed == std::string_view::npos
               ? std::string(file)
               : "core/public/" + std::string(file.substr(installed));
}

template <typename Exception>
[[noreturn]] void Fail(const FailureSite& site, LumError error, const TStringCore& details) {
    const std::string file = ReportPath(site.file);
    PerformLumDebugReport(file, site.line, site.condition, error, "");
    // Thrown as it is made: moving an exception would drop its context.
    throw Exception(error, details,
                    TStringCore::fromUtf8("Source: " + file + ":" + std::to_string(site.line)));
}

}  // namespace

void FailRuntime(const FailureSite& site, LumError error) {
    Fail<LumRuntimeException>(site, error, {});
}

void FailRuntime(const FailureSite& site, LumError error, const TStringCore& details) {
    Fail<LumRuntimeException>(site, error, details);
}

void FailLogic(const FailureSite& site, LumError error) {
    Fail<LumLogicException>(site, error, {});
}

void FailLogic(const FailureSite& site, LumError error, const TStringCore& details) {
    Fail<LumLogicException>(site, error, details);
}

}  // namespace lum::core::detail
