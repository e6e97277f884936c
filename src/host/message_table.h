#pragma once

#include "base/export.h"
#include "host/services.h"

/// The library's localised message table, for the host's string lookup.
extern "C" VRL_API YQ_LStrTable* VRL_G_zref;
