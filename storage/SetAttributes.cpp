// One rule for files and directories: the times first, since a change of flags may take away the right to set them.
#include "storage/Directory.h"
#include "storage/File.h"

namespace ZEMA {
namespace {

template <class Element>
bool SetTimesThenFlags(Element& element, const ElementFlags* flags, const ElementTimes* times) {
    return element.SetTimes(times) && element.SetFlags(flags);
}

}  // namespace

bool File::SetAttributes(const ElementFlags* flags, const ElementTimes* times) {
    return SetTimesThenFlags(*this, flags, times);
}

bool Directory::SetAttributes(const ElementFlags* flags, const ElementTimes* times) {
    return SetTimesThenFlags(*this, flags, times);
}

}  // namespace ZEMA
