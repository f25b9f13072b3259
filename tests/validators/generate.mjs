// Random schemas of draft 7, and instances that satisfy them or nearly do. The same seed gives the
// same pairs. They keep to what JavaScript can say: numbers up to 2^53, no NUL in a name.
let state = 1;

const below = (n) => { // xorshift
    state ^= state << 13;
    state ^= state >>> 17;
    state ^= state << 5;
    return (state >>> 0) % n;
};
const pick = (list) => list[below(list.length)];
const chance = (percent) => below(100) < percent;
const many = (most, make) => Array.from({length: below(most + 1)}, make);
const members = (most, make) => Object.fromEntries(many(most, () => [pick(NAMES), make()]));
const unique = (list) => [...new Set(list)];

const NAMES = ['a', 'b', 'c', 'name', 'port', 'x-y', 'a.b', 'é', ''];
const STRINGS = ['', 'a', 'ab', 'abc', 'tcp', '1', 'é', '🦊🦊', 'a b', '192.168.1.1', '::1', '2024-02-29',
    'A-1', 'x'.repeat(9)];
const NUMBERS = [0, 1, 2, 3, -1, 5, 10, 1.5, -0.5, 0.25, 65535, 65536, 1e15];
const PATTERNS = ['^a', 'b$', '^[a-c]+$', '^(a|tcp)', '[0-9]{1,3}', '^.{2}$', '-', '^$'];
const FORMATS = ['ipv4', 'date'];
const TYPES = ['null', 'boolean', 'integer', 'number', 'string', 'array', 'object'];

const value = (depth) => pick([
    () => null, () => chance(50), () => pick(NUMBERS), () => pick(STRINGS), () => pick(STRINGS),
    () => depth > 0 ? many(4, () => value(depth - 1)) : [],
    () => depth > 0 ? members(4, () => value(depth - 1)) : {},
])();

const KEYWORDS = {
    type: () => chance(70) ? pick(TYPES) : unique([pick(TYPES), pick(TYPES)]),
    enum: () => unique(many(3, () => value(1)).concat('tcp').map(JSON.stringify)).map((text) => JSON.parse(text)),
    const: () => value(1),
    minimum: () => pick(NUMBERS), maximum: () => pick(NUMBERS),
    exclusiveMinimum: () => pick(NUMBERS), exclusiveMaximum: () => pick(NUMBERS),
    multipleOf: () => pick([1, 2, 5, 0.5, 0.25]),
    minLength: () => below(4), maxLength: () => below(9), pattern: () => pick(PATTERNS), format: () => pick(FORMATS),
    minItems: () => below(3), maxItems: () => below(5), uniqueItems: () => chance(80),
    items: (depth) => chance(75) ? schema(depth) : [schema(depth), schema(depth)],
    additionalItems: (depth) => schema(depth), contains: (depth) => schema(depth),
    minProperties: () => below(3), maxProperties: () => below(5),
    required: () => unique(many(2, () => pick(NAMES))),
    properties: (depth) => members(4, () => schema(depth)),
    patternProperties: (depth) => Object.fromEntries(many(2, () => [pick(PATTERNS), schema(depth)])),
    additionalProperties: (depth) => chance(60) ? false : schema(depth),
    propertyNames: (depth) => schema(depth),
    dependencies: (depth) => members(2, () => chance(50) ? unique(many(2, () => pick(NAMES))) : schema(depth)),
    allOf: (depth) => [schema(depth), schema(depth)], anyOf: (depth) => [schema(depth), schema(depth)],
    oneOf: (depth) => [schema(depth), schema(depth)], not: (depth) => schema(depth),
    if: (depth) => schema(depth), then: (depth) => schema(depth), else: (depth) => schema(depth),
};
const LEAVES = Object.keys(KEYWORDS).filter((name) => KEYWORDS[name].length === 0);

const schema = (depth) => {
    if (chance(4)) {
        return chance(70);
    }
    if (chance(6)) {
        return {$ref: '#/definitions/' + pick(['small', 'short'])};
    }
    const names = unique(many(3, () => pick(depth > 0 ? Object.keys(KEYWORDS) : LEAVES)));
    return Object.fromEntries(names.map((name) => [name, KEYWORDS[name](depth - 1)]));
};

// A value that is made with a schema in mind, and often satisfies it.
const instance = (of, depth) => {
    if (typeof of !== 'object' || depth === 0 || chance(8)) {
        return value(2);
    }
    if (of.const !== undefined || of.enum) {
        return of.enum ? pick(of.enum) : of.const;
    }
    const alternatives = [of.allOf, of.anyOf, of.oneOf].filter(Boolean).flat();
    if (alternatives.length > 0 && chance(60)) {
        return instance(pick(alternatives), depth - 1);
    }
    const object = of.properties || of.required || of.patternProperties || of.additionalProperties !== undefined;
    const type = of.type ? pick([of.type].flat()) : object ? 'object' : of.items || of.contains ? 'array' : '';
    if (type === 'object') {
        const named = Object.entries(of.properties || {}).filter(() => chance(85));
        return {...Object.fromEntries((of.required || []).map((name) => [name, value(1)])),
            ...Object.fromEntries(named.map(([name, inner]) => [name, instance(inner, depth - 1)])),
            ...chance(20) ? members(2, () => value(1)) : {}};
    }
    if (type === 'array') {
        return many(4, () => instance([of.items || of.contains || true].flat()[0] ?? true, depth - 1));
    }
    return {string: () => pick(STRINGS), integer: () => pick(NUMBERS), number: () => pick(NUMBERS),
        boolean: () => chance(50), null: () => null}[type]?.() ?? value(2);
};

// `schemas` groups of a schema and `instances` values each.
export const generate = (seed, schemas, instances) => {
    state = seed;
    return Array.from({length: schemas}, () => {
        const made = {$schema: 'http://json-schema.org/draft-07/schema#',
            definitions: {small: {type: 'integer', maximum: 5}, short: {maxLength: 3}},
            ...Object.fromEntries(many(4, () => pick(Object.keys(KEYWORDS))).map((name) => [name, KEYWORDS[name](3)]))};
        return {schema: made, instances: Array.from({length: instances}, () => instance(made, 5))};
    });
};
