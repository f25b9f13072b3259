// Who may see and change what.
#ifndef BACKEND_ACCESS_H
#define BACKEND_ACCESS_H

#include <string>

#include "Resources.h"

// Whether members of that name are left out of what is sent: the passwords of the gateway's users
// always, others unless an administrator asks.
bool isSecret(Place const& place, std::string const& name);

// Removes the secrets in a copy of the value at the place, or in the whole database.
void removeSecrets(Place const& place, TreeMapObject& copy);

// Throws the refusal of a place whose path leads through a secret.
void requireVisible(Place const& place);

// Throws the refusal of a place that cannot be written to.
void requireWritable(Place const& place);

#endif
