# The verdicts of python3-jsonschema: reads the same groups, writes arrays of booleans, with
# a text in place of each where it cannot use the schema.
import json
import sys

import jsonschema


def verdicts(group):
    Validator = jsonschema.validators.validator_for(group["schema"], jsonschema.Draft7Validator)
    validator = Validator(group["schema"], format_checker=Validator.FORMAT_CHECKER)
    try:
        return [validator.is_valid(instance) for instance in group["instances"]]
    except Exception as error:  # a reference that it does not find, for one
        return [str(error)] * len(group["instances"])


for line in sys.stdin:
    print(json.dumps(verdicts(json.loads(line))))
