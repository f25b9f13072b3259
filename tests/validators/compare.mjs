// Compares verdicts, and the places of faults, with those of four other validators:
//   node compare.mjs VERDICTS SEED SCHEMAS INSTANCES    on generated pairs
//   node compare.mjs VERDICTS SUITE-FILE...             on files of the JSON Schema Test Suite
// Prints each difference with the schema and the instance. Fails when a place differs, the suite expects
// another verdict, or two of the four agree on one.
import {spawnSync} from 'node:child_process';
import {mkdtempSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {basename, join} from 'node:path';
import {createRequire} from 'node:module';
import {generate} from './generate.mjs';

const require = createRequire(join(process.cwd(), 'package.json'));
const Ajv = require('ajv').default;
const addFormats = require('ajv-formats').default;
const {validator} = require('@exodus/schemasafe');
const [verdicts, ...rest] = process.argv.slice(2);
const work = mkdtempSync(join(tmpdir(), 'validators-'));

const run = (command, args, input) =>
    spawnSync(command, args, {input, encoding: 'utf8', maxBuffer: 1 << 30}).stdout;
const lines = (groups, command, args) =>
    run(command, args, groups.map((group) => JSON.stringify(group)).join('\n') + '\n')
        .trim().split('\n').map((line) => JSON.parse(line));

const tried = (make) => {
    try {
        return make();
    } catch (error) {
        return () => error.message.split('\n')[0];
    }
};
const ajvOf = ({schema}) => tried(() => {
    const check = addFormats(new Ajv({strict: false, allErrors: true})).compile(schema);
    return (instance) => check(instance) ? [] : check.errors;
});
const schemasafeOf = ({schema}) => tried(() => validator(schema, {mode: 'lax', formatAssertion: true}));

// A result for each instance: the errors, innermost first; none when it is valid.
const blazeOf = ({schema, instances}) => {
    writeFileSync(join(work, 'schema.json'), JSON.stringify(schema));
    const files = instances.map((value, i) => join(work, `${i}.json`));
    files.forEach((file, i) => writeFileSync(file, JSON.stringify(instances[i])));
    const output = run('node_modules/.bin/jsonschema', ['validate', '--json', '--continue', '--format-assertion',
        join(work, 'schema.json'), ...files]);
    return output.split(/(?<=^\})\n/m).filter((text) => text.trim()).map((text) => JSON.parse(text))
        .filter((result) => 'valid' in result).map((result) => result.valid ? [] : result.errors ?? 'no errors');
};

// A JSON pointer in the path language of the library.
const pathOf = (pointer, instance) => pointer.split('/').slice(1).map((token) => {
    const name = token.replace(/~1/g, '/').replace(/~0/g, '~');
    const step = Array.isArray(instance) ? `[${name}]` : name;
    instance = instance?.[name];
    return step;
}).join('.');

// The place of the only fault that ajv finds, if there is just one, and no choice of alternatives.
const onlyPlace = (errors) => {
    const faults = errors.filter(({keyword}) => !['if', 'propertyNames'].includes(keyword));
    const places = new Set(faults.map(({instancePath, keyword, params, propertyName}) => instancePath +
        (keyword === 'additionalProperties' ? '/' + params.additionalProperty.replace(/~/g, '~0').replace(/\//g, '~1')
            : propertyName !== undefined ? '/' + propertyName : '')));
    return places.size === 1 && !faults.some(({keyword}) => /Of$|not/.test(keyword)) ? [...places][0] : null;
};

// Of a member that is not allowed, where no member has a name of its own, Blaze names the object.
const isKnown = (location, fault) =>
    fault.keyword === 'additionalProperties' && fault.path !== location && fault.path.startsWith(location);

const groups = rest[0].endsWith('.json')
    ? rest.flatMap((file) => JSON.parse(readFileSync(file)).map(({schema, tests}) =>
        ({file: basename(file), schema, instances: tests.map(({data}) => data), expected: tests.map(({valid}) => valid)})))
        .filter(({file, schema}) => file !== 'refRemote.json' && !/"\$ref":"http:\/\/(json-schema|localhost)/.test(JSON.stringify(schema)))
        .map((group) => typeof group.schema === 'boolean' ? group
            : {...group, schema: {$schema: 'http://json-schema.org/draft-07/schema#', ...group.schema}})
    : generate(...rest.map(Number));
const own = lines(groups, verdicts, []);
const python = lines(groups, 'python3', [join(import.meta.dirname ?? '.', 'verdicts.py')]);

let failed = false;
const count = {pairs: 0, valid: 0, places: 0, differences: {}, unable: {}};
groups.forEach((group, at) => {
    const ajv = ajvOf(group);
    const schemasafe = schemasafeOf(group);
    const blaze = blazeOf(group);
    group.instances.forEach((instance, i) => {
        const fault = own[at][i];
        const errors = ajv(instance);
        const others = {ajv: Array.isArray(errors) ? errors.length === 0 : errors, schemasafe: schemasafe(instance),
            python: python[at][i], blaze: blaze[i] === undefined ? 'no result' : blaze[i].length === 0,
            expected: group.expected?.[i] ?? (fault === null)};
        const report = (who, what) => {
            count.differences[who] = (count.differences[who] ?? 0) + 1;
            console.log(`${who}: ${what}\n  ${JSON.stringify(group.schema)}\n  ${JSON.stringify(instance)}`);
        };
        const contesting = Object.values(others).filter((verdict) => verdict === (fault !== null)).length;
        failed ||= contesting > 1 || others.expected !== (fault === null);
        for (const [who, verdict] of Object.entries(others)) {
            if (typeof verdict !== 'boolean') {
                count.unable[who] = (count.unable[who] ?? 0) + 1;
            } else if (verdict !== (fault === null)) {
                report(who, `${verdict ? 'valid' : 'invalid'}, not ${fault ? JSON.stringify(fault) : 'valid'}`);
            }
        }
        const place = fault && Array.isArray(errors) ? onlyPlace(errors) : null;
        if (place !== null && Array.isArray(blaze[i]) && blaze[i].length > 0) {
            ++count.places;
            const location = pathOf(blaze[i][0].instanceLocation, instance);
            if (location !== fault.path && !isKnown(location, fault)) {
                failed = true;
                report('place', `${location}, not ${JSON.stringify(fault)}`);
            }
        }
        ++count.pairs;
        count.valid += fault === null ? 1 : 0;
    });
});
rmSync(work, {recursive: true});
console.log(count);
process.exitCode = failed ? 1 : 0;
