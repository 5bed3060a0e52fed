// SPDX-License-Identifier: Apache-2.0
// What goes wrong between the server and the clients of the random runs.
#pragma once

#include <cstdint>
#include <string>

// Logging in stays as it is, and nothing makes an answer say something that is not so.
inline std::string FaultPlanText(uint32_t seed) {
  return R"({"Seed":)" + std::to_string(seed & 0x7fffffff) + R"(,"Rules":[
    {"Fault":"ColleagueEdit","Method":"PUT","Path":"V0/Views/#","Chance":0.06,
     "Colleague":{"User":"colleague","Method":"DELETE","Path":"V0/Views/#"}},
    {"Fault":"Delay","Path":"V*/View*","Chance":0.05,"Milliseconds":15},
    {"Fault":"DropBefore","Path":"V*/View*","Chance":0.04},
    {"Fault":"DropAfter","Path":"V*/View*","Chance":0.05},
    {"Fault":"Truncate","Path":"V*/View*","Chance":0.04},
    {"Fault":"EmptyBody","Path":"V*/View*","Chance":0.03},
    {"Fault":"MissingErrorCode","Path":"V*/View*","Chance":0.03},
    {"Fault":"WrongKinds","Method":"PUT","Path":"V0/View*","Chance":0.04},
    {"Fault":"WrongKinds","Method":"DELETE","Path":"V0/View*","Chance":0.04},
    {"Fault":"DropAfter","Path":"V0/Changes","Chance":0.1},
    {"Fault":"DuplicateChange","Chance":0.04},
    {"Fault":"LateChange","Chance":0.02,"Milliseconds":20},
    {"Fault":"TruncateChange","Chance":0.005},
    {"Fault":"StallStream","Chance":0.003,"Milliseconds":100}]})";
}

// Answers and change streams are late, each by itself; nothing is lost but, where changes are not kept for long, what a
// stream has broken off before.
inline std::string CrossingPlanText(uint32_t seed, bool breaksStreams) {
  return R"({"Seed":)" + std::to_string(seed & 0x7fffffff) + R"(,"Rules":[
    {"Fault":"Delay","Path":"V0/View*","Chance":0.25,"Milliseconds":4},
    {"Fault":"Delay","Path":"V0/View*","Chance":0.2,"Milliseconds":15},
    {"Fault":"Delay","Path":"V0/View*","Chance":0.15,"Milliseconds":50},
    {"Fault":"Delay","Path":"V0/View*","Chance":0.05,"Milliseconds":150},
    {"Fault":"LateChange","Chance":0.1,"Milliseconds":5},
    {"Fault":"LateChange","Chance":0.07,"Milliseconds":25},
    {"Fault":"LateChange","Chance":0.04,"Milliseconds":90},
    {"Fault":"LateChange","Chance":0.015,"Milliseconds":250})" +
         (breaksStreams ? R"(,
    {"Fault":"TruncateChange","Chance":0.01},
    {"Fault":"StallStream","Chance":0.01,"Milliseconds":200})"
                        : "") +
         "]}";
}
