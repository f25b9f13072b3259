// The members whose values are secrets: vobidb masks them, and the example back end leaves them out.
#pragma once

inline constexpr char const* SECRET_NAMES[] = {"password", "passphrase", "presharedKey", "pin",
                                               "wpsPin"};
