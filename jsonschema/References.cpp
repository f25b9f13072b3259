// Finds the schemas that the references of a schema name, in the same document.
#include <assert.h>

#include "jsonschema/Compiler.h"
#include "jsonschema/Json.h"
#include "jsonschema/Uri.h"

namespace jsonschema {

bool Compiler::resolveReferences() {
    Identified* const document = made(scratch_.make<Identified>());
    if (document == nullptr) {
        return false;
    }
    *document = {"", first_, nullptr};
    firstIdentified_ = lastIdentified_ = document;
    identifiers_ = 1;
    for (Source* source = first_; source != nullptr; source = source->next) {
        identify(*source);
    }
    // Resolving a reference may read a schema at a place where none is expected, which adds sources.
    for (Source* source = first_; source != nullptr; source = source->next) {
        if (source->reference != nullptr && !resolve(*source)) {
            return note({source->node, source->reference->keyword->name},
                        "a reference to a part of the schema");
        }
    }
    return true;
}

// Finds the base in force inside a schema, whose parent was identified before. A "$ref" disables its
// siblings, the identifier included.
void Compiler::identify(Source& source) {
    if (source.parent != nullptr) {
        source.base = source.parent->base;
    }
    std::string_view const id = textOf(memberOf(source.document, draft_ >= 6 ? "$id" : "id"));
    if (id.empty() || source.reference != nullptr) {
        return;
    }
    Identified* const identified = made(scratch_.make<Identified>());
    if (id.size() > limits::REFERENCE_LENGTH || identified == nullptr ||
        !budget_.spend(10 + source.base.size() + id.size())) {
        budget_.giveUp();
        return;
    }
    std::string_view const uri = resolveUri(source.base, id, scratch_);
    UriParts const parts(uri);
    bool const isName = !parts.fragment.empty();  // "#name": the base stays as it is
    *identified = {isName ? uri : parts.document, &source, nullptr};
    assert(lastIdentified_->next == nullptr);
    lastIdentified_->next = identified;
    lastIdentified_ = identified;
    ++identifiers_;
    if (!isName) {
        source.base = parts.document;
    }
}

bool Compiler::resolve(Source& source) {
    std::string_view const text = source.referenceText;
    if (text.size() > limits::REFERENCE_LENGTH ||
        !budget_.spend(10 + source.base.size() + text.size())) {
        return false;
    }
    std::string_view const uri = resolveUri(source.base, text, scratch_);
    if (made(uri.data()) == nullptr || !budget_.spend(identifiers_ + sources_ / 8 + uri.size())) {
        return false;
    }
    source.reference->schema = target(uri);
    return source.reference->schema != nullptr;
}

Node const* Compiler::target(std::string_view uri) {
    UriParts const parts(uri);
    bool const isName = !parts.fragment.empty() && parts.fragment[0] != '/';
    std::string_view const wanted = isName ? uri : parts.document;
    Identified const* at = firstIdentified_;
    while (at != nullptr && at->uri != wanted) {
        at = at->next;
    }
    if (at == nullptr || isName || parts.fragment.empty()) {
        return at != nullptr ? at->source->node : nullptr;
    }
    json_object* const document = followPointer(at->source->document, parts.fragment, scratch_);
    Node const* const known = nodeOf(document);
    return known != nullptr || document == nullptr ? known
                                                   : readTarget(document, *at->source->node, parts);
}

Node const* Compiler::nodeOf(json_object* document) const {
    Source const* source = first_;
    while (source != nullptr && source->document != document) {
        source = source->next;
    }
    return source != nullptr ? source->node : nullptr;
}

// Reads a schema at a place where none is expected.
Node const* Compiler::readTarget(json_object* document, Node const& base, UriParts const& uri) {
    std::string_view const pointer = percentDecoded(uri.fragment, schema_.arena);
    if (made(pointer.data()) == nullptr) {
        return nullptr;
    }
    assert(last_ != nullptr && last_->next == nullptr);
    Source* const before = last_;
    base_ = uri.document;
    Node const* const node = readSchema(document, {&base, nullptr, pointer.data()}, nullptr);
    for (Source* source = before->next; source != nullptr; source = source->next) {
        identify(*source);
    }
    return node;
}

}  // namespace jsonschema
