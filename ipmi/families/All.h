// All families of models.
#pragma once

#include "ipmi/families/DS1100.h"
#include "ipmi/families/DS1600.h"
#include "ipmi/families/DS2700.h"
#include "ipmi/families/DS2900.h"
#include "ipmi/families/DS3000.h"
#include "ipmi/families/DS460.h"
#include "ipmi/families/DS500.h"
#include "ipmi/families/DS750.h"
#include "ipmi/families/Emerson760.h"
