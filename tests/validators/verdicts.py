# The verdicts of python3-jsonschema: reads the same groups, writes arrays of booleans.
import json
import sys

import jsonschema

for line in sys.stdin:
    group = json.loads(line)
    Validator = jsonschema.validators.validator_for(group["schema"])
    validator = Validator(group["schema"], format_checker=Validator.FORMAT_CHECKER)
    print(json.dumps([validator.is_valid(instance) for instance in group["instances"]]))
