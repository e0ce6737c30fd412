// The property list of a bundle: any text is read or refused, and what was read can be written and read again.
#include "fuzz/Fuzzing.h"
#include "host/print/JsonWriter.h"
#include "host/print/PropertyList.h"
#include "host/system/Utf8Text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ZEMA;
    const Result<Value> value = ReadPropertyList(fuzzing::TextOf(data, size));
    if (!value) {
        fuzzing::Require(!value.Why().text.empty(), "a list that is refused has a reason");
        return 0;
    }
    std::string list = PropertyListHead();
    AppendPropertyListValue(*value, 0, list);
    const Result<Value> again = ReadPropertyList(list + PropertyListTail());
    const std::string json = JsonText(*value);
    fuzzing::Require(IsUtf8(json) && again && JsonText(*again) == json, "what was read can be written and read again");
    return 0;
}
