#include "study/check/result.h"
#include "study/command.h"
#include "study/output.h"
#include "study/record.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace study {

namespace {

/// The options as CLI11 reads them.
struct RawCheck
{
    std::string project;
    double charactersPerToken = usualCharactersPerToken;
    std::string record;
    std::optional<double> priceIn;
    std::optional<double> priceOut;
    bool bridge = false;
    qint64 context = 0;
    bool json = false;
};

constexpr const char *checkRules =
    R"(Nothing is sent. What blocks is looked for in pairs that are open alone.

The estimate: each request to come is counted as the program makes it, with the
persona's history as it grows in the run; none is taken to fail or to be tried
again. An answer to come is as long as the answers that its question has, else
those to questions of its type, else by default: the labels of a choice, 3
characters for a number, 100 to 1,200 for a text, 80 to 500 for reasoning.
In the middle is their mean, low and high are their quartiles at least. A token
has so many characters, in the middle; low and high are a quarter fewer and more
tokens, or, with a record, what a tenth of its exchanges lie below and above of.
Each message has 4 tokens more.

--json prints one object. A range has "low", "middle" and "high".
  project    "file", "sha256"
  pairs      "answered", "open"
  requests   "all", "adjudicated" (those to the adjudicator's model)
  personas   for each "uuid", "name", "answered", "open", "tokensIn" and
             "tokensOut" (ranges)
  questions  for each "number", "type" (as stored), "adjudicated", "answered",
             "open", "tokensIn", "tokensOut", "estimatedBy" ("same question",
             "same type", "default")
  tokens     ranges "in", of which "system", "history", "questions", "formats";
             "out"
  rates      ranges "in", "out" (tokens a character); "perMessage";
             "exchangesIn", "exchangesOut" (measured at); "damagedLines"
  cost       a range, with prices
  context    with --context: "tokens", and requests beyond: "middle", "high"
  findings   for each "severity" ("blocking", "warning"), "kind", "text", and
             what of "question", "persona", "uuid", "count", "details" it has
Kinds that block: no-prompt, no-persona-text, no-labels, refused-format. Others:
unknown-type, unreadable-labels, empty-label, label-twice, unseen-choices,
prompt-twice, persona-text-twice, persona-name-twice, reasoning-not-asked,
empty-replay, empty-replay-to-come, context, stale-question, stale-persona,
deleted-persona, deleted-question, unused-condition, unused-attachment,
unused-search.

Exit status: 0 nothing blocks, 1 something does, 2 usage, 3 file can't be read.)";

/// CLI11's own ranges take what is no number.
CLI::Validator numberFrom(double lowest, const std::string &wanted)
{
    return {[lowest, wanted](std::string &text) {
                bool isNumber = false;
                const double number = QByteArray::fromStdString(text).toDouble(&isNumber);
                return isNumber && std::isfinite(number) && number >= lowest ? std::string() : "wants " + wanted;
            },
            ""};
}

void addEstimateOptions(CLI::App &command, RawCheck &raw)
{
    auto *characters = command
                           .add_option("--characters-per-token", raw.charactersPerToken,
                                       "Characters that make a token: about 4 in "
                                       "English, fewer in most other languages")
                           ->type_name("N")
                           ->check(numberFrom(0.1, "a number from 0.1"))
                           ->capture_default_str();
    command.add_option("--record", raw.record, "Record of orrinet-bridge to measure that at; implies --bridge")
        ->type_name("FILE")
        ->excludes(characters);
    auto *in = command.add_option("--price-in", raw.priceIn, "Price of a million tokens sent, in any currency")
                   ->type_name("PRICE")
                   ->check(numberFrom(0, "a price"));
    auto *out = command.add_option("--price-out", raw.priceOut, "Price of a million tokens of answers")
                    ->type_name("PRICE")
                    ->check(numberFrom(0, "a price"))
                    ->needs(in);
    in->needs(out);
    command
        .add_option("--context", raw.context, "Tokens that the model takes, answer included: warns of larger requests")
        ->type_name("N")
        ->check(CLI::Range(qint64(1), qint64(1) << 50).description(""));
}

/// Nothing where the record can't be read, which has been said then.
std::optional<CheckSettings> settingsFrom(const RawCheck &raw)
{
    CheckSettings settings{.rates = assumedRates(raw.charactersPerToken),
                           .bridged = raw.bridge || !raw.record.empty(),
                           .context = raw.context};
    if (raw.priceIn && raw.priceOut)
        settings.prices = Prices{.in = *raw.priceIn, .out = *raw.priceOut};
    if (raw.record.empty())
        return settings;
    RateMeter meter;
    const RecordReading reading = readRecord(QString::fromStdString(raw.record),
                                             [&meter](const RecordedExchange &exchange) { meter.add(exchange); });
    if (!reading.failure.isEmpty()) {
        say(reading.failure);
        return std::nullopt;
    }
    settings.rates = meter.rates(raw.charactersPerToken);
    settings.damagedLines = reading.damagedLines;
    return settings;
}

Exit runCheck(const RawCheck &raw)
{
    const auto project = readProject(QString::fromStdString(raw.project));
    if (const QString *reason = std::get_if<QString>(&project)) {
        say(*reason);
        return Exit::File;
    }
    const auto settings = settingsFrom(raw);
    if (!settings)
        return Exit::File;
    const auto &read = std::get<Project>(project);
    const CheckResult result = checkProject(read, *settings);
    print(raw.json ? QString::fromUtf8(checkJson(read, result)) : checkText(read, result));
    return result.isBlocked() ? Exit::Findings : Exit::Done;
}

} // namespace

void addCheck(CLI::App &app, Command &chosen)
{
    auto *command = app.add_subcommand("check", "Counts what a run would ask, estimates its tokens and their cost, and "
                                                "looks for what would go wrong");
    const auto raw = std::make_shared<RawCheck>();
    command->add_option("PROJECT", raw->project, "Project file (.ormt)")->required()->type_name("");
    addEstimateOptions(*command, *raw);
    command->add_flag("--bridge", raw->bridge, "The run goes through orrinet-bridge, so that no format is refused");
    command->add_flag("--json", raw->json, "Print all of it for machines, in place of a short report");
    command->footer(checkRules);
    command->callback([&chosen, raw] { chosen.run = [raw] { return runCheck(*raw); }; });
}

} // namespace study
