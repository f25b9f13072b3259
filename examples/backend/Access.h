// Who may see and change what.
#ifndef BACKEND_ACCESS_H
#define BACKEND_ACCESS_H

#include <json-c/json.h>

#include <optional>
#include <string>

#include "Resources.h"

// Whether members of that name are left out of what is sent: the passwords of the gateway's users
// always, others unless an administrator asks.
bool isSecret(Place const& place, std::string const& name);

// Whether the path of the place leads through a secret.
bool namesSecret(Place const& place);

// Answers with a copy of a value, out of which it takes the secrets. 503 for null: no memory for a copy.
Reply show(Place const& place, int status, json_object* copy);

// Why a place cannot be written to, if it cannot.
std::optional<Reply> refuseWriting(Place const& place);

#endif
