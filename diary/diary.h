// The working-time diary: working patterns, calendar and absence duration
// counting. One include for the callers (the absence reports, the command
// line); each header below describes its own part.
#pragma once

#include "diary/absence_days.h"
#include "diary/absence_year.h"
#include "diary/dates_list.h"
#include "diary/day_counter.h"
#include "diary/day_type.h"
#include "diary/diary_trace.h"
#include "diary/hours_per_day.h"
#include "diary/pattern_set.h"
#include "diary/working_day.h"
#include "diary/working_pattern.h"
