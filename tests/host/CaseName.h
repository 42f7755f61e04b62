#pragma once

#include <string>

namespace lumhost::test {

/// Names a test of a table after the row's field `name`.
struct CaseName {
    template <typename Info>
    std::string operator()(const Info& testCase) const {
        return testCase.param.name;
    }
};

}  // namespace lumhost::test
