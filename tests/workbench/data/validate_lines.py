# SPDX-License-Identifier: Apache-2.0
"""Validates every line of standard input against a JSON Schema: validate_lines.py SCHEMA"""
import json
import sys

import jsonschema

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
count = 0
for number, line in enumerate(sys.stdin, 1):
    for error in validator.iter_errors(json.loads(line)):
        sys.exit(f"line {number}: {'/'.join(map(str, error.path))}: {error.message[:300]}")
    count += 1
if count < 2:
    sys.exit("nothing to validate")
