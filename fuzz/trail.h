#pragma once

#include <QtTypes>

/// Tells the fuzzer that an input led somewhere: what happens within Qt and SQLite it can't see by itself, since they
/// are not compiled for it. Inputs are kept that lead to a place or a count of visits that no other led to.
enum class Trail : quint8 { JsonError, JsonShape, Answer, Statement, Authorized, Warning, Rows, Bound };
void leaveTrail(Trail kind, size_t place);
