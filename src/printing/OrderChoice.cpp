// SPDX-License-Identifier: MIT
#include "OrderChoice.h"
