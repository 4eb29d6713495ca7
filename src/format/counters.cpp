// Counters that show their progress in the log.
//
// Each of the 16 counters has a value, which only grows, the number of the value's decimal digits,
// and thresholds at which the digits grow and the value is shown. One call of count moves each
// threshold once at most, however large its step: a value that passes several thresholds in one
// call is shown once, and the digits catch up with the calls that follow.
//
// A value stops at the largest 32-bit number. The thresholds are wider, so that one beyond 32 bits
// is never reached.

#include <algorithm>
#include <iterator>

#include "containers/slots.h"
#include "frame/messages.h"
#include "frame/resets.h"
#include "klib.h"
#include "parameters/parameters.h"

namespace klib::counters {

namespace {

constexpr int32_t counter_count = 16;

struct Counter {
  int32_t counter_value = 0;  // the current value
  int32_t display_step = 0;   // distance between two showings; 0 means never shown
  int64_t next_power = 1;     // power of ten at which _count_length grows next
  int64_t next_display = 0;   // value at which the value is shown next
};
struct State {
  Counter counters[counter_count];
};
constinit State state;

bool exists(int32_t counter) { return counter >= 0 && counter < counter_count; }

void show(int32_t value) { Kdisplay(MESSAGE_COUNTER_VALUE, value); }

bool showing_progress() { return parameters::number(parameters::Number::show_progress) != 0; }

void advance(Counter &counter, int32_t &length, int32_t delta) {
  counter.counter_value =
      static_cast<int32_t>(std::min<int64_t>(int64_t{counter.counter_value} + delta, INT32_MAX));
  if (counter.counter_value >= counter.next_power) {
    ++length;
    counter.next_power *= 10;
  }
  if (counter.counter_value >= counter.next_display) {
    counter.next_display += counter.display_step;
    if (counter.display_step != 0) show(counter.counter_value);
  }
}

}  // namespace

void reset() {
  state = State{};
  std::fill(std::begin(_count_length), std::end(_count_length), 0);
}

}  // namespace klib::counters

// Exported names

using namespace klib;
using namespace klib::counters;

constinit int32_t _count_length[counter_count] = {};

void init_counter(int32_t counter, int32_t start, int32_t step) {
  if (!exists(counter)) return;
  int32_t length = 1;
  int64_t power = 10;
  for (; power <= start; power *= 10) length += 1;
  _count_length[counter] = length;
  state.counters[counter] = {.counter_value = start,
                             .display_step = step,
                             .next_power = power,
                             .next_display = int64_t{start} + step};
}

int32_t count(int32_t counter, int32_t delta) {
  if (!exists(counter)) return 0;
  Counter &counted = state.counters[counter];
  if (delta == 0) show(counted.counter_value);
  if (delta > 0) advance(counted, _count_length[counter], delta);
  return counted.counter_value;
}

void c_init() {
  if (!showing_progress()) return;
  init_counter(slots::sentence_counter, 0,
               parameters::number(parameters::Number::show_progress_step));
}

void c_tick(int32_t delta) {
  if (showing_progress()) count(slots::sentence_counter, delta);
}

void c_exit(int32_t set0, int32_t number0, const char *format0, int32_t set1, int32_t number1,
            const char *format1, int32_t setN, int32_t numberN, const char *formatN) {
  if (!showing_progress()) return;
  const auto &[value, step, next_power, next_display] = state.counters[slots::sentence_counter];
  if (step != 0 && value > step && value % step != 0) {
    show(value);
    Kdisplay(MESSAGE_END_OF_PROGRESS);
  }
  if (value == 0) {
    Kmessage(set0, number0, format0, value);
  } else if (value == 1) {
    Kmessage(set1, number1, format1, value);
  } else {
    Kmessage(setN, numberN, formatN, value);
  }
}
