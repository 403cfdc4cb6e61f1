// Days and hours of an absence.
//
// gfncDiaryNoOfDays counts one absence of one employee: it selects the
// employee's posts (the given post; else the current ones, status "R" and,
// when asked, "A"; or every post when the "ABSALLJOBS" control parameter is
// "Y"), clips the absence to each post's dates, and counts each post's part
// with gfncDiaryDayHourCount. "DatesList" is shared by the posts of the
// absence, so a date or half worked in two posts counts once in days while
// its hours count in each post. Zero-hours posts add nothing.
//
// gfncDiaryDayHourCount asks the working-day check about each half of each
// date of a range (through PostWorkingDays, working_day.h, when the run has
// read the posts ahead; else gfncDiaryWorkingDay for every half). A half adds its hours when the pattern works it and the
// half markers include it ("PM" on the first day drops the morning, "AM" on
// the last day the afternoon), and half a day unless its "DatesList" key was
// already listed when the date came up (the key is the date, plus "+AM" or
// "+PM" when halves count separately). A date the pattern works only half of
// counts whole when "CHKWPAMPM" begins with "Y"; with whole days only, any
// part of a date counts as one day. Whole days only defaults to "Y" for
// ordinary absences ("P") and "N" for sickness and holiday.
//
// Dates are texts, day first ("DD/MM/YYYY") or ISO. Both report errors to
// the error component (module HRDiaryFunctions); a missing date or employee
// is not an error (nothing is counted). Single-threaded.
#pragma once

#include <string>

#include "diary/pattern_set.h"

namespace orvalis {

double gfncDiaryNoOfDays(const std::string& employee, const std::string& fromDate, const std::string& morning,
                         const std::string& toDate, const std::string& afternoon, const std::string& type,
                         const std::string& postSeq, double& totalHours, const std::string& absenceFromTime,
                         const std::string& absenceToTime, PatternSet& patterns,
                         const std::string& wholeDaysOnly = "", bool includeAbsentPosts = false);

bool gfncDiaryDayHourCount(const std::string& workingPattern, const std::string& patternStartDate,
                           const std::string& type, const std::string& employee, const std::string& post,
                           const std::string& fromDate, const std::string& fromHalf, const std::string& fromTime,
                           const std::string& toDate, const std::string& toHalf, const std::string& toTime,
                           double& days, double& hours, PatternSet& patterns,
                           const std::string& initialiseDatesList, const std::string& wholeDaysOnly);

}  // namespace orvalis
