// The members whose values are secrets: vobidb masks them, and the example back end leaves them out.
#ifndef VOBIUTILS_TOOLS_SECRETNAMES_H
#define VOBIUTILS_TOOLS_SECRETNAMES_H

inline constexpr char const* SECRET_NAMES[] = {"password", "passphrase", "presharedKey", "pin",
                                               "wpsPin"};

#endif
