// Who may see and change what.
#ifndef BACKEND_ACCESS_H
#define BACKEND_ACCESS_H

#include <optional>
#include <string>

#include "Resources.h"

// Whether members of that name are left out of what is sent: the passwords of the gateway's users
// always, others unless an administrator asks.
bool isSecret(Place const& place, std::string const& name);

// Whether the path of the place leads through a secret.
bool namesSecret(Place const& place);

// Removes the secrets in a copy of the value at the place, or in the whole database.
void removeSecrets(Place const& place, TreeMapObject& copy);

// Why a place cannot be written to, if it cannot.
std::optional<Reply> refuseWriting(Place const& place);

#endif
