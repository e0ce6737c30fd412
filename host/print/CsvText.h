// Values in the lines of a table that spreadsheets read (RFC 4180).
#pragma once

#include <string>
#include <vector>

#include "host/print/Value.h"

namespace ZEMA {

// A line of cells, which ends in CR and LF.
std::string CsvLine(const std::vector<std::string>& cells);

// A value in one cell, not quoted yet: a list's items joined by "; ", and so a dictionary's, each "KEY: VALUE".
//
// Spreadsheets take a text that begins with '=', '+', '-', '@', a tab or a CR for a formula, which may reach out of the
// table. Such a text has an apostrophe in front.
std::string CsvCell(const Value& value);

}  // namespace ZEMA
