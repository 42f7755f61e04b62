#pragma once

#include <string>

#include "Options.h"

namespace lumhost {

/// The text that a command's --help prints; that of Command::Help lists all commands.
std::string HelpOf(Command command);

}  // namespace lumhost
