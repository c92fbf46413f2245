// The steps that a script may have, a row each, in the order of the help.
#pragma once

#include <array>
#include <cstdint>

#include "host/play/steps.h"

namespace play {

// What is wrong with the words of a step, see StepForm.
void check_model(const Words &words, const Checks &checks);
void check_size(const Words &words, const Checks &checks);
void check_text(const Words &words, const Checks &checks);
void check_status(const Words &words, const Checks &checks);
void check_signal(const Words &words, const Checks &checks);
void check_hands(const Words &words, const Checks &checks);
void check_spbox(const Words &words, const Checks &checks);
void check_says(const Words &words, const Checks &checks);
void check_in_order(const Words &words, const Checks &checks);
void check_seconds(const Words &words, const Checks &checks);

inline constexpr std::size_t kAny = SIZE_MAX;

inline constexpr std::array<StepForm, 20> kStepForms{{
    {"box", 1, 1, "box MODEL", "a new, healthy box of this model", check_model},
    {"terminal", 2, 2, "terminal ROWS COLUMNS", "for the next commands; 24 80 at first", check_size},
    {"play", 1, kAny, "play FILE [NAME=VALUE...]", "plays another script, found beside this one", nullptr},
    {"start", 1, kAny, "start COMMAND...", "the operator starts a command in the box", nullptr},
    {"wait", 1, 1, "wait \"text\"",
     "until the text comes on the screen: what was\nthere before the last keys does not count", check_text},
    {"absent", 1, 1, "absent \"text\"", "the text is not on the screen", check_text},
    {"type", 1, 1, "type \"keys\"", R"("3\n", " ", "\003" for Ctrl-C)", nullptr},
    {"screen", 1, 1, "screen \"caption\"", "prints the screen", nullptr},
    {"exit", 1, 1, "exit STATUS", "waits for the command's end with this status", check_status},
    {"dies", 1, 1, "dies SIGNAL", "waits for its end by this signal: INT, HUP, ...", check_signal},
    {"signal", 1, 1, "signal SIGNAL", "sends the command a signal", check_signal},
    {"hangup", 0, 0, "hangup", "the operator's line is cut", nullptr},
    {"hands", 1, 1, "hands \"steps\"", "a technician works beside the operator from now\non; see `spbox technician`",
     check_hands},
    {"handsdone", 0, 0, "handsdone", "waits until the technicians have done their\nwork, as the end of the play does",
     nullptr},
    {"spbox", 1, kAny, "spbox VERB ...", "works on the box, as in `spbox pull /PSU#3`", check_spbox},
    {"says", 1, 2, "says [not] \"text\"", "the last such step printed it", check_says},
    {"in_order", 0, kAny, "in_order [but UNIT...]",
     "the command left all as it should: no LED, no\nflag, no maintenance mode, no process, file or\n"
     "lock; these units detached, and no others",
     check_in_order},
    {"patience", 1, 1, "patience SECONDS", "of the waits that follow; 10 at first", check_seconds},
    {"pause", 1, 1, "pause SECONDS", "nobody does anything", check_seconds},
    {"say", 1, 1, "say \"text\"", "prints a line of the script's own", nullptr},
}};

}  // namespace play
