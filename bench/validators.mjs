// Times validation beside other validators, best of 15 rounds, in microseconds:
//   node validators.mjs VALIDATION GATEWAY
import {execFileSync} from 'node:child_process';
import {mkdtempSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {tmpdir} from 'node:os';
import {join} from 'node:path';

const require = createRequire(join(process.cwd(), 'package.json'));
const Ajv = require('ajv').default;
const addFormats = require('ajv-formats').default;
const {validator} = require('@exodus/schemasafe');
const [validation, gateway] = process.argv.slice(2);
const work = mkdtempSync(join(tmpdir(), 'validators-'));

const rules = Array.from({length: 100}, (_, i) => ({id: i + 1, name: `rule-${i}`, protocol: ['tcp', 'udp', 'both'][i % 3],
    externalPort: 1000 + i, internalPort: 80 + i, internalClient: `192.168.1.${10 + i}`, enabled: i % 2 === 0}));
const CASES = [
    ['login request', 'gateway/GATEWAY_LOGIN_REQ', {username: 'administrator', password: 'correct horse batter'}, 2000],
    ['list of 100 rules', 'service/SERVICE_PORTFORWARDING_LIST_RESP', {enabled: true, count: 100, rules}, 20],
];

const rounds = (time) => Math.min(...Array.from({length: 15}, time));
const bestOf15 = (count, check) => rounds(() => {
    const start = process.hrtime.bigint();
    for (let i = 0; i < count; ++i) {
        if (!check()) {
            throw new Error('invalid');
        }
    }
    return Math.round(Number(process.hrtime.bigint() - start) / count) / 1000;
});
const blaze = (schema, instance, count, options) => rounds(() => Number(/PASS ([\d.]+)/.exec(
    execFileSync('node_modules/.bin/jsonschema', ['validate', schema, instance, '--format-assertion',
        '--benchmark', '--loop', count, ...options], {encoding: 'utf8'}))[1]));

for (const [name, label, value, count] of CASES) {
    const schema = join(work, 'schema.json');
    const instance = join(work, 'instance.json');
    const document = JSON.parse(readFileSync(join(gateway, 'data', `${label}_SCHEMA.ldb`)));
    writeFileSync(schema, JSON.stringify(document));
    writeFileSync(instance, JSON.stringify(value));
    const ajv = addFormats(new Ajv()).compile(document);
    const schemasafe = validator(document, {mode: 'lax', formatAssertion: true});
    console.log(`${name}, ${JSON.stringify(value).length} bytes`);
    console.table({
        ...JSON.parse(execFileSync(validation, [schema, instance, count])),
        'Blaze, fast': blaze(schema, instance, count, ['--fast']),
        'Blaze, exhaustive': blaze(schema, instance, count, []),
        ajv: bestOf15(count, () => ajv(value)),
        schemasafe: bestOf15(count, () => schemasafe(value)),
    });
}
rmSync(work, {recursive: true});
