#pragma once

#include <string>

namespace lumhost {

/// The forms in which a store stands in a file.
enum class FileForm {
    Csv,     ///< comma-separated text, one column each
    Json,    ///< text with typed keys
    Payload  ///< the binary form, of which columns are read in place
};

/// The form of an input: by the endings ".json" and ".lum", and Csv for any other name.
FileForm FormOfInput(const std::string& file);

/// The form of an output, by its ending. Errors: UsageError for any but the three.
FileForm FormOfOutput(const std::string& file);

}  // namespace lumhost
