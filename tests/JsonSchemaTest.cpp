#include <jsonschema.h>
#include <pthread.h>

#include <chrono>
#include <string>
#include <vector>

#include "JsonRef.h"
#include "Support.h"

namespace {

std::string repeated(std::string const& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

// Deeper than json-c reads by default; with double quotes or single ones.
json_object* parsed(std::string const& text) {
    json_tokener* const tokener = json_tokener_new_ex(5000);
    json_object* const value =
        json_tokener_parse_ex(tokener, text.c_str(), static_cast<int>(text.size()) + 1);
    json_tokener_free(tokener);
    return value;
}

bool isValid(std::string const& schema, std::string const& instance) {
    JsonRef const document(parsed(schema));
    JsonRef const value(parsed(instance));
    EXPECT_TRUE(document) << schema.substr(0, 100);
    std::string const before = text(document.get()) + text(value.get());
    bool const valid = json_validate_instance(value.get(), document.get()) != 0;
    EXPECT_EQ(text(document.get()) + text(value.get()), before);
    return valid;
}

struct Row {
    char const* schema;
    char const* instance;
    bool valid;
};

template <size_t N>
void expectRows(Row const (&rows)[N]) {
    for (Row const& row : rows) {
        EXPECT_EQ(isValid(row.schema, row.instance), row.valid)
            << row.schema << "  " << row.instance;
    }
}

char const DRAFT_4[] = "'$schema':'http://json-schema.org/draft-04/schema#'";

TEST(JsonSchema, ComparesNumbersExactly) {
    Row const rows[] = {
        {"{'maximum':9007199254740992}", "9007199254740993", false},
        {"{'maximum':9007199254740992.0}", "9007199254740993", false},
        {"{'maximum':9007199254740993}", "9007199254740992.0", true},
        {"{'exclusiveMinimum':9007199254740992.0}", "9007199254740993", true},
        {"{'minimum':18446744073709551615}", "18446744073709551614", false},
        {"{'maximum':-9223372036854775808}", "-9223372036854775807", false},
        {"{'maximum':1e300}", "18446744073709551615", true},
        {"{'minimum':-0.5}", "0", true},
        {"{'maximum':-0.5}", "0", false},
        {"{'const':1}", "1.0", true},
        {"{'const':9007199254740993}", "9007199254740992.0", false},
        {"{'const':0}", "-0.0", true},
        {"{'multipleOf':2}", "2.6", false},
        {"{'multipleOf':0.1}", "0.3", true},
        {"{'multipleOf':0.01}", "4.02", true},
        {"{'multipleOf':0.01}", "4.025", false},
        {"{'multipleOf':0.0001}", "0.0075", true},
        {"{'multipleOf':1e-300}", "1e300", true},
        {"{'multipleOf':0.123456789}", "1e308", false},
        {"{'multipleOf':18446744073709551615}", "1e40", false},
        {"{'multipleOf':3}", "18446744073709551615", true},
        {"{'multipleOf':100}", "1e2", true},
        {"{'multipleOf':7}", "-21", true},
        {"{'multipleOf':7}", "0.0", true},
        {"{'maximum':5}", "NaN", false},
        {"{'multipleOf':1}", "Infinity", false},
        {"{'type':'integer'}", "1.0", true},
        {"{'type':'integer'}", "1e300", true},
        {"{'type':'integer'}", "1.5", false},
        {"{'uniqueItems':true}", "[1, 1.0]", false},
        {"{'uniqueItems':true}", "[1, true, '1', null, [1], {'a':1}, 0, -1]", true},
        {"{'uniqueItems':true}", "[{'a':1,'b':[2]}, {'b':[2.0],'a':1}]", false},
        {"{'enum':[[1,{'a':null}]]}", "[1.0,{'a':null}]", true},
    };
    expectRows(rows);
    std::string const draft4 = DRAFT_4;
    EXPECT_FALSE(isValid("{" + draft4 + ",'type':'integer'}", "1.0"));
    EXPECT_TRUE(isValid("{" + draft4 + ",'minimum':3,'exclusiveMinimum':true}", "4"));
    EXPECT_FALSE(isValid("{" + draft4 + ",'minimum':3,'exclusiveMinimum':true}", "3"));
    EXPECT_FALSE(isValid("{" + draft4 + ",'exclusiveMinimum':3}", "3"));
    EXPECT_TRUE(isValid("{" + draft4 + ",'const':1}", "2"));
    EXPECT_FALSE(isValid("{" + draft4 + ",'items':true}", "[]"));
}

TEST(JsonSchema, CountsAndMatchesTexts) {
    Row const rows[] = {
        {"{'maxLength':2}", "'\\u20ac\\ud83d\\ude00'", true},
        {"{'maxLength':1}", "'\\u20ac\\ud83d\\ude00'", false},
        {"{'minLength':3}", "'a\\u0000b'", true},
        {"{'minLength':4}", "'a\\u0000b'", false},
        {"{'minLength':2.0}", "'a'", false},
        {"{'pattern':'^a.b$'}", "'a\\u0000b'", true},
        {"{'pattern':'^a$'}", "'a\\n'", false},
        {"{'pattern':'b'}", "'abc'", true},
        {"{'pattern':'^\\\\d+$'}", "'\\u0663'", false},
        {"{'pattern':'^(\\\\u0041|[])$'}", "'A'", true},
        {"{'const':'a\\u0000b'}", "'a\\u0000c'", false},
        {"{'required':['a\\u0000b']}", "{'a':1}", false},
        {"{'propertyNames':{'pattern':'^[a-z]+$'}}", "{'Name':1}", false},
        {"{'patternProperties':{'^x-':{'type':'integer'}},'additionalProperties':false}",
         "{'x-a':1}", true},
        {"{'patternProperties':{'^x-':{'type':'integer'}},'additionalProperties':false}",
         "{'y-a':1}", false},
        {"{'format':'ipv4'}", "'192.168.1.1'", true},
        {"{'format':'ipv4'}", "'192.168.1.256'", false},
        {"{'format':'ipv4'}", "'1.2.3.4\\u0000'", false},
        {"{'format':'ipv6'}", "'2001:db8::1'", true},
        {"{'format':'ipv6'}", "'2001:db8::1%eth0'", false},
        {"{'format':'date'}", "'2024-02-29'", true},
        {"{'format':'date'}", "'2023-02-29'", false},
        {"{'format':'date'}", "'2000-02-30'", false},
        {"{'format':'time'}", "'23:59:60.5+05:30'", true},
        {"{'format':'time'}", "'24:00:00Z'", false},
        {"{'format':'date-time'}", "'1990-12-31T23:59:59z'", true},
        {"{'format':'date-time'}", "'1990-12-31 23:59:59Z'", false},
        {"{'format':'email'}", "'a.b@example.net'", true},
        {"{'format':'email'}", "'a..b@example.net'", false},
        {"{'format':'hostname'}", "'gateway-1.example.net'", true},
        {"{'format':'hostname'}", "'-gateway.example.net'", false},
        {"{'format':'uri'}", "'http://example.net/a?b#c'", true},
        {"{'format':'uri'}", "'/a'", false},
        {"{'format':'json-pointer'}", "'/a~1b'", true},
        {"{'format':'json-pointer'}", "'/a~2b'", false},
        {"{'format':'relative-json-pointer'}", "'1/a'", true},
        {"{'format':'relative-json-pointer'}", "'01'", false},
        {"{'format':'regex'}", "'^(a|b)$'", true},
        {"{'format':'regex'}", "'^(a|b$'", false},
        {"{'format':'ipv4'}", "5", true},
        {"{'format':'unheard-of'}", "'x'", true},
    };
    expectRows(rows);
}

TEST(JsonSchema, RefusesMalformedSchemas) {
    char const* const schemas[] = {
        "5",
        "'x'",
        "[]",
        "{'type':5}",
        "{'type':'text'}",
        "{'type':['null',5]}",
        "{'minimum':'1'}",
        "{'minimum':NaN}",
        "{'multipleOf':0}",
        "{'multipleOf':-1}",
        "{'multipleOf':0.0}",
        "{'minLength':-1}",
        "{'minLength':1.5}",
        "{'maxItems':'1'}",
        "{'pattern':'('}",
        "{'pattern':5}",
        "{'patternProperties':{'(':true}}",
        "{'required':'a'}",
        "{'required':[1]}",
        "{'properties':[]}",
        "{'properties':{'a':5}}",
        "{'items':5}",
        "{'items':[5]}",
        "{'additionalProperties':'no'}",
        "{'dependencies':{'a':5}}",
        "{'dependencies':{'a':[5]}}",
        "{'allOf':{}}",
        "{'anyOf':[]}",
        "{'oneOf':[5]}",
        "{'not':null}",
        "{'if':5}",
        "{'then':5}",
        "{'enum':5}",
        "{'uniqueItems':1}",
        "{'format':5}",
        "{'$ref':5}",
        "{'definitions':{'a':5}}",
        "{'exclusiveMinimum':'x'}",
        "{'$ref':'#/nowhere'}",
        "{'$ref':'#name'}",
        "{'$ref':'other'}",
        "{'$ref':'http://json-schema.org/draft-07/schema#'}",
        "{'$ref':'#/type','type':'object'}",
        // in places that the instance does not reach
        "{'properties':{'a':{'properties':{'b':{'type':5}}}}}",
        "{'items':{'$ref':'#/nowhere'}}",
        "{'not':{'pattern':'('}}",
        "{'unknown':{'type':5},'properties':{'a':{'$ref':'#/unknown'}}}",
    };
    for (char const* schema : schemas) {
        EXPECT_FALSE(isValid(schema, "{}")) << schema;
        EXPECT_FALSE(isValid("{'not':" + std::string(schema) + "}", "{}")) << schema;
    }
    EXPECT_EQ(json_validate_instance(nullptr, nullptr), 0);
    EXPECT_TRUE(isValid("{'unknown':{'type':5},'default':'x','examples':5}", "{}"));
}

TEST(JsonSchema, FollowsReferencesInsideTheDocument) {
    Row const rows[] = {
        {"{'properties':{'a':{'$ref':'#'}},'additionalProperties':false}", "{'a':{'a':{}}}", true},
        {"{'properties':{'a':{'$ref':'#'}},'additionalProperties':false}", "{'a':{'b':1}}", false},
        {"{'$ref':'#/d~1e/%25/0','d/e':{'%':[{'type':'null'}]}}", "null", true},
        {"{'$ref':'#/d~1e/%25/0','d/e':{'%':[{'type':'null'}]}}", "1", false},
        {"{'$ref':'#n','definitions':{'x':{'$id':'#n','type':'null'}}}", "1", false},
        {"{'$id':'http://a/b/c','items':{'$ref':'d#n'},"
         "'definitions':{'x':{'$id':'/b/d','definitions':{'y':{'$id':'#n','type':'null'}}}}}",
         "[null]", true},
        {"{'$ref':'#/definitions/x','type':'object','definitions':{'x':true}}", "1", true},
        {"{'enum':[{'$id':'x','type':'null'}],'properties':{'a':{'$ref':'x'}}}",
         "{'$id':'x','type':'null'}", false},
    };
    expectRows(rows);
}

// What cannot be decided is invalid, whatever stands around it.
TEST(JsonSchema, FailsClosedUnderEveryCombination) {
    std::string const endless = "{'$ref':'#/definitions/endless'}";
    char const* const around[] = {
        "X",
        "{'not':X}",
        "{'anyOf':[X,true]}",
        "{'anyOf':[{'not':X}]}",
        "{'oneOf':[X,true]}",
        "{'oneOf':[true,X]}",
        "{'allOf':[{'not':X}]}",
        "{'if':X,'else':true}",
        "{'if':X,'then':false}",
        "{'if':{'not':X},'then':true}",
        "{'properties':{'a':{'not':X}}}",
        "{'items':[{'not':X}],'additionalProperties':{'not':X}}",
        "{'dependencies':{'a':{'not':X}}}",
        "{'not':{'contains':X,'propertyNames':X,'patternProperties':{'a':X}}}",
    };
    for (std::string schema : around) {
        for (size_t at = schema.find('X'); at != schema.npos; at = schema.find('X')) {
            schema.replace(at, 1, endless);
        }
        schema = "{'allOf':[" + schema +
                 "],'definitions':{'endless':{'$ref':'#/definitions/other'},"
                 "'other':{'allOf':[{'$ref':'#/definitions/endless'}]}}}";
        EXPECT_FALSE(isValid(schema, "{'a':1}")) << schema;
    }
}

// On a thread with a stack of 128 KiB, and in bounded time.
class Confined {
  public:
    Confined(std::string const& schema, std::string const& instance)
        : schema_(parsed(schema)), instance_(parsed(instance)) {}

    bool isValid() {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, 128 * 1024);
        pthread_t thread;
        auto const start = std::chrono::steady_clock::now();
        EXPECT_EQ(pthread_create(&thread, &attributes, run, this), 0);
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&attributes);
        // far above what it takes, for a busy machine and sanitizers
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
        return result_;
    }

  private:
    static void* run(void* self) {
        Confined* const call = static_cast<Confined*>(self);
        call->result_ = json_validate_instance(call->instance_.get(), call->schema_.get()) != 0;
        return nullptr;
    }

    JsonRef schema_;
    JsonRef instance_;
    bool result_ = false;
};

std::string list(int count, std::string (*element)(int)) {
    std::string elements;
    for (int i = 0; i < count; ++i) {
        elements += (i > 0 ? "," : "") + element(i);
    }
    return elements;
}

std::string doubling(int i) {
    std::string const next = "{'$ref':'#/definitions/d" + std::to_string(i + 1) + "'}";
    return "'d" + std::to_string(i) + "':{'allOf':[" + next + "," + next + "]}";
}

TEST(JsonSchema, BearsHostileInput) {
    std::string const letters(100000, 'a');
    std::string const arrays = repeated("[", 3000) + repeated("]", 3000);
    auto const number = [](int i) { return std::to_string(i); };
    std::string const numbers = "[" + list(50000, number) + "]";
    struct {
        char const* name;
        std::string schema;
        std::string instance;
        bool valid;
    } const rows[] = {
        {"circle", "{'$ref':'#'}", "1", false},
        {"two circles", "{'allOf':[{'$ref':'#'},{'$ref':'#'}]}", "1", false},
        {"doubling",
         "{'definitions':{" + list(50, doubling) + ",'d50':true},'$ref':'#/definitions/d0'}", "1",
         false},
        {"deep schema", repeated("{'not':", 3000) + "true" + repeated("}", 3000), "1", false},
        {"deep instance", "{'items':{'$ref':'#'}}", arrays, false},
        {"deep instance, not looked into", "{'type':'array'}", arrays, true},
        {"instance of 70 levels", "{'items':{'$ref':'#'}}", repeated("[", 70) + repeated("]", 70),
         true},
        {"deep constant", "{'const':" + arrays + "}", arrays, false},
        {"deep elements", "{'uniqueItems':true}", "[" + arrays + ",1]", false},
        {"backtracking", "{'pattern':'(a+)+$'}", "'" + letters + "!'", false},
        {"backtracking, negated", "{'not':{'pattern':'^(a|aa)+$'}}", "'" + letters + "!'", false},
        {"backtracking in names", "{'patternProperties':{'^(a+)+$':true}}",
         "{'" + letters + "!':1}", false},
        {"recursion in a pattern", "{'pattern':'^(.|(?R))*$'}", "'" + letters + "'", false},
        {"groups in groups", "{'pattern':'" + repeated("(", 1000) + repeated(")", 1000) + "'}",
         "'a'", false},
        {"large repetition", "{'pattern':'((a{100}){100}){100}'}", "'a'", false},
        {"long pattern", "{'pattern':'" + letters + "'}", "'a'", false},
        {"long text", "{'pattern':'^[a-z]*$'}", "'" + repeated(letters, 10) + "'", true},
        {"pattern given by the instance", "{'format':'regex'}", "'" + letters + "'", false},
        {"bytes that are not UTF-8", "{'not':{'pattern':'b'}}", "'a\xFF'", false},
        {"long reference", "{'$ref':'#/" + letters + "'}", "1", false},
        {"many elements", "{'uniqueItems':true}", numbers, true},
        {"many elements, two equal", "{'uniqueItems':true}", "[" + numbers + "," + numbers + "]",
         false},
        {"long constant", "{'enum':[1," + numbers + "]}", numbers, true},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(Confined(row.schema, row.instance).isValid(), row.valid) << row.name;
    }
}

TEST(JsonSchema, ReadsFiles) {
    TempDir const dir;
    dir.write("schema", "{\"type\": \"object\"}");
    dir.write("object", "{}");
    dir.write("array", "[]");
    dir.write("bad", "{");
    EXPECT_NE(json_validate_instance_from_file("object", "schema"), 0);
    for (char const* instance : {"array", "bad", "none", static_cast<char const*>(nullptr)}) {
        EXPECT_EQ(json_validate_instance_from_file(instance, "schema"), 0);
    }
    for (char const* schema : {"bad", "none", static_cast<char const*>(nullptr)}) {
        EXPECT_EQ(json_validate_instance_from_file("object", schema), 0);
    }
}

}  // namespace
