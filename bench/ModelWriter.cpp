#include "bench/ModelWriter.h"

#include <cstdarg>
#include <cstdio>

namespace bench {

void ModelWriter::Print(const char* format, ...) {
    char line[512];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    text_.append(line, static_cast<std::size_t>(length));
}

}  // namespace bench
