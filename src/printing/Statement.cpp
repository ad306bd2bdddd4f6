// SPDX-License-Identifier: MIT
#include "Statement.h"
