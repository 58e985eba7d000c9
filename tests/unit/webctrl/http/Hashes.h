// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include "CBB/WebCtrl/Http/LoginFile.h"
#include "tests/unit/Unit.h"

// The password of each is "pass" at the cheapest setting; that of the last is "p\u00e4ss:2".
#define BCRYPT_REST "04$abcdefghijklmnopqrstuufznL8bkzdtHwLhca4To/v9Lo9bA7fR6"
#define BCRYPT "$2b$" BCRYPT_REST
#define SHA512                                                                                     \
    "$6$rounds=1000$salt$NqhXojlgP5NLvJojBnjQD87i66jhb8s3bZord3hSZoIgbCJqUfJdp7pclsLBBqgn02fAtd/"  \
    "vn4lieLeX5J.h90"
#define YESCRYPT "$y$j75$salt....$xSDWJUAL.4fDzM2/p9dE4/ws34Max0HDunmsWLtjo8A"
