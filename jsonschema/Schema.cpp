// Makes and destroys what a compiled schema consists of.
#include "jsonschema/Schema.h"

#include "jsonschema/Pattern.h"

namespace jsonschema {

Schema::~Schema() {
    while (lastPattern != nullptr) {
        Pattern* const previous = lastPattern->previous();
        lastPattern->~Pattern();
        lastPattern = previous;
    }
    json_object_put(values);
}

}  // namespace jsonschema
