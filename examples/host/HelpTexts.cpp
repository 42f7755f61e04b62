#include "HelpTexts.h"

namespace lumhost {
namespace {

constexpr const char* kHelp =
    R"(lumhost: reads files into typed columns, shows and converts them, and runs functions and
programs over them

usage:
  lumhost show  FILE [KEYPATH] [OPTION...]   print the columns, or one value, as JSON
  lumhost show  FILE --table KEYPATH [--rows N] [OPTION...]
                                             print a table as people look at it
  lumhost types FILE [OPTION...]             print each column's name and type
  lumhost convert FILE OUT [KEYPATH] [OPTION...]
                                             write what a file holds to another, in OUT's form
  lumhost dump  FILE.lum                     print the bytes of a payload with what they mean
  lumhost functions [NAME]                   list the built-in functions
  lumhost apply FUNCTION FILE COLUMN [COLUMN] [--constant LITERAL...] [OPTION...]
                                             print a function's results for one or two columns
  lumhost fold FUNCTION FILE COLUMN --initial LITERAL [--scan|--scan-right] [OPTION...]
                                             print what a function makes of a whole column
  lumhost run PROGRAM.vtl FILE [--print KEYPATH...] [--out OUT] [--time] [OPTION...]
                                             run a program over the columns
  lumhost check PROGRAM.vtl                  read a program and print it as it was understood
  lumhost --help

A FILE whose name ends with .json is JSON with typed keys; one that ends with .lum is a payload of
the binary form, which is mapped into memory and not read; any other is comma-separated text. OUT
ends with .csv, .json or .lum.

'lumhost show --help' lists the options and says how types are found; the other commands take
--help as well.
Exit status: 0 done, 1 the data is at fault, 2 the command line is at fault.
)";

constexpr const char* kShowUsage =
    R"(usage: lumhost show FILE [KEYPATH] [OPTION...]
       lumhost show FILE --table KEYPATH [--rows N] [OPTION...]

Reads FILE into a store, a key map of columns where it is comma-separated text, and prints it as
JSON, or the value at KEYPATH alone. A key path is a column's name, or a column's name and a row
counted from 0: weather, weather/12. A name that is not one word is written in single quotes:
"'Body Mass (g)'/0". The key path / is the store itself.

  --compact         print the store on one line
  --slim            the same for web clients: keys without types, colours as integers; the value at
                    a KEYPATH is on one line, with colours in hexadecimal, whatever the options
  --table KEYPATH   print what stands there as aligned columns: a table, or a key map of arrays of
                    one length. A special cell is the name of its kind in angle brackets, <Null>;
                    long texts are cut
  --rows N          of a table, print the first N rows; 20 without
)";

constexpr const char* kTypesUsage =
    R"(usage: lumhost types FILE [OPTION...]

Reads FILE and prints each column's name and type, one to a line, in the order of the file, or of
the names where the file has no such order: weather:A<s> is a column "weather", which is an array of
strings.

)";

constexpr const char* kConvertUsage =
    R"(usage: lumhost convert FILE OUT [KEYPATH] [OPTION...]

Reads FILE and writes what it holds to OUT, or what stands at KEYPATH alone, which is a key map or a
table. The ending of OUT says in which form: .csv, .json or .lum.

The binary form keeps all that a store holds, and how arrays are stored. JSON keeps the values, but
for the ninth digit of a Real32, and not what is stated of the order of tables and arrays.
Comma-separated text holds columns of one length and no others: of numbers, texts, dates and
colours, of whose specials only Null is kept, as an empty cell. A text that looks like a number, and
a colour, read back by --type alone.

OUT is replaced when all is written; where something fails it stays as it was.

)";

constexpr const char* kDumpUsage =
    R"(usage: lumhost dump FILE.lum

Prints a payload of the binary form: at each place the position, the bytes and what they mean; of
long runs of items the first ones. docs/wire-format.md tells the form. Where the payload is damaged,
all that comes before is printed, then the place and the reason, and the exit status is 1.

  --verbose         write the library's log to the standard error output
)";

constexpr const char* kFunctionsUsage =
    R"(usage: lumhost functions [NAME]

Lists the built-in functions, all or those called NAME: the types of the inputs and of the output,
the forms, and the flags. Symbols have to be quoted for the shell: lumhost functions "<".

  regular       the form that takes plain elements
  special       the form that takes elements with their kinds, so that Null and its like have rules
  creator (T)   made anew for each use from values of the types T, which 'lumhost apply' takes by
                --constant
  stateful      carries state from element to element
  list (T)      computes one value from a list of values, and cannot be applied to columns

AnyType stands for a column of collections, and in a list for a value of any type.

  --verbose         write the library's log to the standard error output
)";

constexpr const char* kApplyUsage =
    R"(usage: lumhost apply FUNCTION FILE COLUMN [COLUMN] [--constant LITERAL...] [OPTION...]

Applies a function of one input to each element of a COLUMN, or one of two inputs to the elements of
two columns pair by pair, and prints the results as a JSON array. COLUMN is the plain name of a
column. The types of the columns choose among the functions that share a name; 'lumhost functions'
lists them.

Where a column has specials (Null), the special form of the function says what becomes of them. A
function without one is given the other elements only, and what is special stays special in the
result, with the same kind.

  --constant LITERAL   a value that the function is made from, of the type that the function says;
                       a function that is made from a set takes it several times, once a member

)";

constexpr const char* kFoldUsage =
    R"(usage: lumhost fold FUNCTION FILE COLUMN --initial LITERAL [--scan|--scan-right] [OPTION...]

Walks down a COLUMN with an accumulator, which FUNCTION replaces at each element by a value made of
both, and prints the last one as JSON. Where the column or the initial value is special, the special
form of the function is used. A function without one is given the elements that are not special
only; countAll, which does not look at them, is given all.

  --initial LITERAL    the accumulator at the start; Null for none, where there is a special form.
                       It has the type of the column, or, for functions that count, Int32
  --scan               print the accumulator as it stands at each element, as an array
  --scan-right         the same, walking up from the last element

)";

constexpr const char* kRunUsage =
    R"(usage: lumhost run PROGRAM.vtl FILE [--print KEYPATH...] [--out OUT] [--time] [OPTION...]

Reads FILE, whose columns then stand in a store under their names, and runs the statements of
PROGRAM.vtl, a text in UTF-8, over them; docs/vtl.md teaches the language. Then prints, as
KEYPATH: JSON, each value that is asked for; without --print and --out, what the program wrote, as
lumhost types does. Statements that do not depend on each other run at once.

  --print KEYPATH   print the value at the key path; may be given several times
  --out OUT         write the store with all that the program added to it, in the form that the
                    ending says: .csv, .json or .lum
  --time            print for each statement its line, operator, rows, and rows per second

)";

constexpr const char* kCheckUsage =
    R"(usage: lumhost check PROGRAM.vtl

Reads a program and prints it as it was understood, with comments that have a line of their own.
A statement that is none is reported as FILE:LINE:COLUMN. Nothing is run, so that a function that is
not there is found by 'lumhost run' alone.

  --verbose         write the library's log to the standard error output
)";

constexpr const char* kLiteralHelp =
    R"(
A LITERAL is written as a cell of the file is, or is the name of a special kind, as Null or Missing.
Texts, dates and colours may stand in single quotes, with \\, \' and \n for a backslash, a quote and
a line end; nothing in quotes is special, so "'Null'" is a text.
)";

constexpr const char* kImportHelp =
    R"(  --no-header       the first row is data; the columns are called c1, c2, c3, ...
  --type NAME=CODE  read the column NAME as the type CODE, whatever its cells look like; may be
                    given for several columns. Codes: b Bool, i Int32, l Int64, f Real32, r Real64,
                    s String, d Date, t DateTime, c Color
  --verbose         write the library's log to the standard error output
  --                what follows is no option

--no-header and --type are for comma-separated text alone. It is UTF-8, with fields as RFC 4180 has
them: in double quotes a field may hold commas, line ends and doubled quotes, and blanks belong to
the field. All rows have as many fields as the first one, and every column a name of its own. A
faulty row is reported as FILE:LINE, and nothing is printed then.

An empty cell and the cell NA are Null. In quotes they are text: "" is the empty text, or Null where
the column is not a String, and "NA" is text.

A column gets the narrowest type that all its cells fit without losing anything:
  Bool      true, false (or True, False, TRUE, FALSE)
  Int32     digits with an optional sign; Int64 where 32 bits are too few. Leading zeros, as in 007,
            and numbers beyond 64 bits make the column a String
  Real64    numbers with a decimal point or an exponent, 1.5 or 2e-3, among them integers up to 2^53
  Date      YYYY-MM-DD, a day of the calendar in the years 400 to 23829
  DateTime  YYYY-MM-DDTHH:MM:SS with up to four decimals, among them dates
  String    anything else, also when no cell has a value
Cells read as Color are eight hexadecimal digits: alpha, red, green, blue.
)";

}  // namespace

std::string HelpOf(Command command) {
    switch (command) {
        case Command::Show:
            return std::string(kShowUsage) + kImportHelp;
        case Command::Types:
            return std::string(kTypesUsage) + kImportHelp;
        case Command::Convert:
            return std::string(kConvertUsage) + kImportHelp;
        case Command::Dump:
            return kDumpUsage;
        case Command::Functions:
            return kFunctionsUsage;
        case Command::Apply:
            return std::string(kApplyUsage) + kImportHelp + kLiteralHelp;
        case Command::Fold:
            return std::string(kFoldUsage) + kImportHelp + kLiteralHelp;
        case Command::Run:
            return std::string(kRunUsage) + kImportHelp;
        case Command::Check:
            return kCheckUsage;
        case Command::Help:
            break;
    }
    return kHelp;
}

}  // namespace lumhost
