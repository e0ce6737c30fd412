// What a factory is given to make an object from.
#pragma once

namespace ZEMA {

// Base of the argument records; a factory looks at the dynamic type and serves only the records it knows.
struct ObjectFactoryArgs {
    virtual ~ObjectFactoryArgs() = default;
};

}  // namespace ZEMA
