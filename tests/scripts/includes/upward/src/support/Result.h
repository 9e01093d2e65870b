#pragma once

#include <string>
