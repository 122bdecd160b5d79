#pragma once

#include "standin/reply.h"

namespace standin {

/// Answers as a made-up respondent, and says so: always the same for one system text and one last question.
/// A forced function call picks from its enum. The JSON formats, with and without a schema, show no choices, so they
/// are read off the question: after its last colon, separated by semicolons, ended by a full stop. "Rank ..." orders
/// them all, "... On a scale
/// ..." picks one, anything else a subset that is not empty; without choices the answer is a number from 0 to 9.
Reply respond(const Request &request);

} // namespace standin
