// Applies a schema that was made ready to values.
#ifndef JSONSCHEMA_EVALUATION_H
#define JSONSCHEMA_EVALUATION_H

#include "jsonschema/Schema.h"

namespace jsonschema {

class Evaluation {
  public:
    Evaluation(Schema const& schema, Budget& budget) : schema_(schema), budget_(budget) {}

    // Whether `instance` satisfies `schema`, a schema of the document. False, too, when the call
    // becomes undecided.
    bool satisfies(json_object* instance, json_object* schema);

    int draft() const { return schema_.draft(); }
    Schema const& schema() const { return schema_; }
    Budget& budget() { return budget_; }

  private:
    bool satisfiesKeywords(json_object* instance, json_object* schema);

    Schema const& schema_;
    Budget& budget_;
};

}  // namespace jsonschema

#endif
