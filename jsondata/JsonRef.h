// A smart pointer for one reference on a json-c value.
#pragma once

#include <json-c/json.h>

namespace vobiutils {

class JsonRef {
  public:
    // Takes over a reference that the caller holds. Null is allowed everywhere.
    explicit JsonRef(json_object* owned) noexcept : object_(owned) {}
    ~JsonRef() { put(object_); }
    JsonRef(JsonRef const&) = delete;
    JsonRef& operator=(JsonRef const&) = delete;

    // Takes another reference on an object that is owned elsewhere.
    static JsonRef share(json_object* object) noexcept { return JsonRef(json_object_get(object)); }

    json_object* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    // Releases the reference held, and takes over one that the caller holds.
    void reset(json_object* owned) noexcept {
        put(object_);
        object_ = owned;
    }

    // Passes the reference to the caller.
    json_object* release() noexcept {
        json_object* const object = object_;
        object_ = nullptr;
        return object;
    }

  private:
    static void put(json_object* object) noexcept {
        if (object != nullptr) {  // saves a call: json_object_put accepts null
            json_object_put(object);
        }
    }

    json_object* object_;
};

}  // namespace vobiutils
