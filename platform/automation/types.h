#pragma once

#include "platform/values/types.h"
