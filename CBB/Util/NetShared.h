// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// What the network tools share among themselves.

#include <net/route.h>
#include <pthread.h>
#include <vector>

#include "CBB/Util/NetText.h"

extern pthread_mutex_t g_stNetToolLock;

// The rows of the kernel's route table. False, with errno set, when it cannot be opened.
bool ReadRoutes(const RouteForm& form, std::vector<RouteRow>* rows);

// Fills the kernel's route entry. Both addresses are dotted or "default"; `flags` is RTF_UP with or
// without RTF_HOST. False, with the reason printed, when they contradict each other. SetRoute, its
// one caller, gives it nothing that could; the checks are part of the adopted interface and tested
// on their own.
bool BuildRoute(const char* dst, uint32_t mask, const char* gateway, unsigned short flags,
                rtentry* route);
