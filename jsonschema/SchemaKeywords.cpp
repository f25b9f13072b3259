// The keywords that apply further schemas to the same value.
#include "jsonschema/Evaluation.h"
#include "jsonschema/KeywordFunctions.h"

namespace jsonschema {

namespace keywords {

namespace {

bool satisfies(App app, Node const* schema) {
    return app.evaluation.satisfies(app.instance, *schema, app.place);
}

// How many of the schemas hold, up to as many as are enough to know.
size_t holdingSchemas(App app, size_t enough) {
    Evaluation::Alternatives alternatives(app.evaluation);
    size_t holding = 0;
    for (size_t i = 0; i < app.instruction->count && holding < enough; ++i) {
        holding += satisfies(app, app.instruction->schemas[i]) ? 1 : 0;
        alternatives.endOne();
        if (app.evaluation.budget().isUndecided()) {
            break;
        }
    }
    if (holding == 0) {
        alternatives.reportFurthest();
    }
    return holding;
}

}  // namespace

bool never(App) { return false; }

bool reference(App app) { return satisfies(app, app.instruction->schema); }

bool allOf(App app) {
    bool holds = true;
    for (size_t i = 0; i < app.instruction->count && (holds || app.evaluation.goesOn()); ++i) {
        holds = satisfies(app, app.instruction->schemas[i]) && holds;
    }
    return holds;
}

bool anyOf(App app) { return holdingSchemas(app, 1) == 1; }
bool oneOf(App app) { return holdingSchemas(app, 2) == 1; }

// Undecided is not "does not hold": the whole call is then invalid, whatever comes out here.
bool isNot(App app) {
    Evaluation::Silence const silence(app.evaluation);
    return !satisfies(app, app.instruction->schema);
}

namespace {

bool holdsSilently(App app) {
    Evaluation::Silence const silence(app.evaluation);
    return satisfies(app, app.instruction->schema);
}

}  // namespace

bool ifThenElse(App app) {
    Instruction const* const branch = app.instruction->siblings[holdsSilently(app) ? 0 : 1];
    return branch == nullptr || satisfies(app, branch->schema);
}

}  // namespace keywords

}  // namespace jsonschema
