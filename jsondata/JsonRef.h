// Owns one json-c reference.
#ifndef VOBIUTILS_JSONDATA_JSONREF_H
#define VOBIUTILS_JSONDATA_JSONREF_H

#include <json-c/json.h>

namespace vobiutils {

class JsonRef {
  public:
    // Takes over a reference that the caller holds.
    explicit JsonRef(json_object* owned) noexcept : object_(owned) {}
    ~JsonRef() { release(object_); }
    JsonRef(JsonRef const&) = delete;
    JsonRef& operator=(JsonRef const&) = delete;

    // Takes a further reference on an object that others own.
    static JsonRef share(json_object* object) noexcept { return JsonRef(json_object_get(object)); }

    json_object* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    // Takes over a reference that the caller holds, in place of the one held.
    void reset(json_object* owned) noexcept {
        release(object_);
        object_ = owned;
    }

    // Gives the reference away.
    json_object* release() noexcept {
        json_object* const object = object_;
        object_ = nullptr;
        return object;
    }

  private:
    static void release(json_object* object) noexcept {
        if (object != nullptr) {  // json-c would ask too, behind a call
            json_object_put(object);
        }
    }

    json_object* object_;
};

}  // namespace vobiutils

#endif
