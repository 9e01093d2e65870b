#pragma once

#include "support/Result.h"
