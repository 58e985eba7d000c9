// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <cstdint>

// IPv4 interfaces, routes, resolver and keep-alive of this device: netdevice(7), route(8),
// resolv.conf(5), tcp(7). Addresses are 32-bit words in network byte order. Diagnostics go to
// standard output unless told otherwise.
//
// One process-wide lock, not recursive, covers the interface requests, the scans of the route
// table, the resolver file and name look-ups. Only ResolveServerAddress never waits for it;
// SetRoute leaves it to its caller.

// --- Interfaces ---------------------------------------------------------------------------------
// 0; -1 when the kernel refuses, the output then being untouched; -2 for a null name (the hardware
// address: -1).
int GetIfAddr(const char* name, uint32_t* addr);
int GetIfAddr(int sock, const char* name, uint32_t* addr); // asked on the caller's IPv4 socket
int SetIfAddr(const char* name, uint32_t addr);
int GetIfBrdAddr(const char* name, uint32_t* addr); // the broadcast address
int GetIfNetmask(const char* name, uint32_t* mask);
int SetIfNetmask(const char* name, uint32_t mask);
int GetIfHwAddr(const char* name, unsigned char mac[6]);

// Takes the interface down, changes its address and brings it up again as up and multicast, nothing
// else; about a second. 0 or -1.
int SetMacAddress(const char* name, const unsigned char mac[6]);

struct NetIfInfo {
    uint32_t uiAddr;
    uint32_t uiNetmask;
    uint32_t uiGateway;
    unsigned char ucMac[6];
};

// Fills what can be found out and leaves the rest 0. Always 0.
int GetIfInfo(const char* name, NetIfInfo* info);

// 1 when the interface is running, 0 when it is not or there is none. Takes the lock if it is free
// and KEEPS it: from then on whatever waits for the lock waits for ever, and ResolveServerAddress
// answers names from its cache.
int IsIfRunning(const char* name);

// --- Routes -------------------------------------------------------------------------------------
// A default route has the flags 3 (up, gateway), destination 0 and mask 0.
struct DefaultGateway {
    uint32_t uiMask; // always 0
    uint32_t uiGateway;
    char szIfName[16];
};

struct RouteNode {
    uint32_t uiDst;
    uint32_t uiMask;
    uint32_t uiGateway;
    char szIfName[12]; // longer names are cut
    RouteNode* pNext;
};

// The gateway of the interface's first default route, and the destination of its first route that
// is no default route; 0 when there is none. 0, or -1 for a null name or an unreadable table.
int GetIfGateway(const char* name, uint32_t* gateway);
int GetIfNetRoute(const char* name, uint32_t* dst);

// The default routes of all interfaces in the table's order. *count: the capacity of `entries`, on
// return the number filled. 0, or -1 when the table cannot be read.
int GetAllDefaultGateway(int* count, DefaultGateway* entries);

// Adds (action 1) or deletes (any other) the default route through `gateway`. 0 even when the
// kernel refuses, which is only printed; -1 when it could not be asked.
int SetRoute(const char* name, uint32_t gateway, int action);

// Delete the default routes of every interface, or of one. 0, or -1 when the table cannot be read.
int DelDefaultRoutes();
int DelRoute(const char* name);

// Replaces every default route by the given one and the resolver file by two public servers. 0
// whatever the steps reported; -2 for a null name.
int SetDefaultGateway(const char* name, uint32_t gateway);

// The table in its order, or null when it is empty; the caller gives every node to free(3). Ends
// the process with status 1 when the table cannot be read or memory is exhausted.
RouteNode* ReadRouteTable();

// Prints the table. Always 0.
int PrintRouteTable();

// The address of the interface that `dst` is routed through: the first route to its network,
// otherwise the last default route. 0 when there is none, all ones when the table is empty.
uint32_t GetDstAddrRouteIfAddr(uint32_t dst);

// The address of the last default route's interface as dotted text in inet_ntoa's buffer, or null.
const char* GetDefaultRouteIfAddrText();

// The interface of the first route, default routes included, that `dst` matches. 0 or -1.
int GetRouteIfName(const char* dst, char name[12]);

// --- Names --------------------------------------------------------------------------------------
using DnsServerText = char[32];

// Writes "nameserver TEXT" to /etc/resolv.conf, at its end or in place of what it holds. The line
// is cut to 255 characters. 0 or -1.
int AddDnsServer(const char* text, bool append);

// The name servers of /etc/resolv.conf, each with its line end and cut to 31 characters. *count:
// the number of slots, on return the number filled. 0, or -1 when the file cannot be read.
int GetDnsServers(DnsServerText* slots, int* count);

// -1 for null or empty text, 1 when any character is neither a digit nor a dot, else 0.
int IsDomainName(const char* text);

// Turns a name or a dotted address into both forms; either output may be null. 0, or -1 for an
// address or name that is none.
// A name is looked up (gethostbyname(3)) and remembered. While the lock is taken or when the
// look-up fails, the outputs are the last remembered pair, before the first one "192.168.0.10" and
// 0, and the result is -1. A dotted address needs neither lock nor look-up.
int ResolveServerAddress(const char* text, char dotted[20], uint32_t* addr);

// --- TCP ----------------------------------------------------------------------------------------
// A dead peer is found after about twice `idle` seconds. 0, or -1 at the first option refused.
int SetTcpKeepAlive(int socket, int idle);

// 1 for a socket whose connection is established, else 0.
int IsTcpEstablished(int socket);
