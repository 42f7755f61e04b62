#pragma once

#include <fstream>
#include <ostream>
#include <string>

namespace lumhost {

/// A file that appears under its name when it is complete. Until then the bytes stand in a file
/// beside it, so a failure leaves what was there, and a file that is read in place can be replaced
/// by what is made of it.
class OutputFile {
public:
    /// Errors: FileError where no file can be made there.
    explicit OutputFile(const std::string& path);
    /// Discards what was not published.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::ostream& GetStream() { return m_stream; }
    /// Gives the file its name. Errors: FileError where not all could be written.
    void Publish();

private:
    std::string m_path;
    std::string m_draftPath;
    std::ofstream m_stream;
};

}  // namespace lumhost
