/// \file
/// Names of the request and response messages of each API type.
///
/// A message is known by its API type (0 to 6: gateway, wifi, network, security, service,
/// mediashare, qos; see API_TYPE_T in LocalDbCtrl.h) and its communication type, the index into the
/// table of that API type. Requests end in "_REQ", responses in "_RESP".
///
/// The strings are static: do not free or change them. The tables are writable, so that a program
/// may replace an entry with a string of its own at start-up; the library reads the tables at each
/// use. They are filled before the program's static initializers run. Their sizes are part of the
/// binary interface.
///
/// Threads: any thread may read.
#ifndef VOBIUTILS_COMMLABEL_H
#define VOBIUTILS_COMMLABEL_H

#pragma GCC visibility push(default)

extern char const* GATEWAY_LBL[89];     ///< messages of API type 0
extern char const* WIFI_LBL[84];        ///< messages of API type 1
extern char const* NETWORK_LBL[78];     ///< messages of API type 2
extern char const* SECURITY_LBL[112];   ///< messages of API type 3
extern char const* SERVICE_LBL[164];    ///< messages of API type 4
extern char const* MEDIASHARE_LBL[60];  ///< messages of API type 5
extern char const* QOS_LBL[20];         ///< messages of API type 6

/// The name of message `commType` of API type `apiType`, a string that the library owns; "unknown"
/// for an API type without messages (7 and above) and for an index past the end of its table.
char const* COMM_LABEL(unsigned int apiType, unsigned int commType);

/// The reverse: the communication type of the first message of API type `apiType` that has this
/// name; -1 when there is none, and for a null label.
int COMM_TYPE(unsigned int apiType, char const* label);

#pragma GCC visibility pop

#endif
