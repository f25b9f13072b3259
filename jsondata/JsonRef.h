// Owns one json-c reference.
#ifndef VOBIUTILS_JSONDATA_JSONREF_H
#define VOBIUTILS_JSONDATA_JSONREF_H

#include <json-c/json.h>

class JsonRef {
  public:
    // Takes over a reference that the caller holds.
    explicit JsonRef(json_object* owned) noexcept : object_(owned) {}
    ~JsonRef() { json_object_put(object_); }
    JsonRef(JsonRef const&) = delete;
    JsonRef& operator=(JsonRef const&) = delete;

    // Takes a further reference on an object that others own.
    static JsonRef share(json_object* object) noexcept { return JsonRef(json_object_get(object)); }

    json_object* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    // Takes a further reference, in place of the one held.
    void keep(json_object* object) noexcept {
        json_object_get(object);
        json_object_put(object_);
        object_ = object;
    }

    // Gives the reference away.
    json_object* release() noexcept {
        json_object* const object = object_;
        object_ = nullptr;
        return object;
    }

  private:
    json_object* object_;
};

#endif
