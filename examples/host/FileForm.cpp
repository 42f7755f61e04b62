#include "FileForm.h"

#include "Options.h"

namespace lumhost {

FileForm FormOfInput(const std::string& file) {
    return file.ends_with(".json")  ? FileForm::Json
           : file.ends_with(".lum") ? FileForm::Payload
                                    : FileForm::Csv;
}

FileForm FormOfOutput(const std::string& file) {
    const FileForm form = FormOfInput(file);
    if (form == FileForm::Csv && !file.ends_with(".csv")) {
        throw UsageError("the form of '" + file +
                         "' is not known; its name has to end with .csv, .json or .lum");
    }
    return form;
}

}  // namespace lumhost
