#include "bridge/options.h"

#include <QFile>
#include <QHostAddress>

#include <CLI/CLI.hpp>

using namespace Qt::StringLiterals;

namespace bridge {

namespace {

/// The options as CLI11 reads them.
struct Raw
{
    std::string to = "https://api.openai.com/v1";
    std::string roots;
    std::string keyEnv;
    std::vector<std::string> models;
    Format format = Format::JsonSchema;
    int timeout = 120;
    int retries = 4;
    std::string record;
    std::string replay;
    qint64 maxRequests = -1;
    qint64 maxTokens = -1;
    std::string run;
    std::string save;
    bool inPlace = false;
    int jobs = 1;
    bool quiet = false;
};

std::string versionText()
{
    QFile file(u":/VERSION.txt"_s);
    const bool opened = file.open(QIODevice::ReadOnly);
    return "orrinet-bridge " + (opened ? file.readAll().trimmed() : QByteArray()).toStdString();
}

void addEndpointOptions(CLI::App &app, Raw &raw)
{
    static const std::map<std::string, Format> formats{
        {"json_schema", Format::JsonSchema}, {"json_object", Format::JsonObject}, {"as-is", Format::AsIs}};
    app.add_option("--to", raw.to, "Base of an OpenAI-compatible API; plain http only to this machine")
        ->type_name("URL")
        ->capture_default_str();
    app.add_option("--ca", raw.roots, "PEM file of further roots, for an endpoint with a private one")
        ->type_name("FILE");
    app.add_option("--key-env", raw.keyEnv, "Environment variable with the key, in place of the one in the preferences")
        ->type_name("NAME");
    app.add_option("--model", raw.models, "Model to ask in place of the one asked for; A=B for A alone, repeatable")
        ->type_name("NAME")
        ->allow_extra_args(false);
    app.add_option("--format", raw.format,
                   "How JSON is asked for: json_schema (strict), json_object (no schema, the keys in a message), "
                   "as-is (as the window does)")
        ->transform(CLI::CheckedTransformer(formats).description(""))
        ->default_str("json_schema")
        ->type_name("FORMAT");
    app.add_option("--timeout", raw.timeout, "Seconds that an attempt may take")
        ->check(CLI::Range(1, 86400).description(""))
        ->type_name("S")
        ->capture_default_str();
    app.add_option("--retries", raw.retries,
                   "Further attempts after connection failures, timeouts and the statuses 408, 409, 429, 500, 502, "
                   "503, 504")
        ->check(CLI::Range(0, 100).description(""))
        ->type_name("N")
        ->capture_default_str();
}

void addRecordOptions(CLI::App &app, Raw &raw)
{
    auto *record =
        app.add_option("--record", raw.record, "File to append a JSON line to for each exchange, without the key")
            ->type_name("FILE");
    app.add_option("--replay", raw.replay, "Record to answer from; nothing goes to the network")
        ->type_name("FILE")
        ->excludes(record);
    app.add_option("--max-requests", raw.maxRequests, "Refuse everything after this many requests sent")
        ->check(CLI::NonNegativeNumber.description(""))
        ->type_name("N");
    app.add_option("--max-tokens", raw.maxTokens, "Refuse everything after this many tokens, in and out")
        ->check(CLI::NonNegativeNumber.description(""))
        ->type_name("N");
}

void addRunOptions(CLI::App &app, Raw &raw)
{
    auto *run =
        app.add_option("--run", raw.run, "Run the survey of a project to its end, without a window")->type_name("FILE");
    auto *save = app.add_option("--save", raw.save, "With --run: the file to make, a copy that gets the answers")
                     ->type_name("FILE")
                     ->needs(run);
    app.add_flag("--in-place", raw.inPlace, "With --run: store the answers in the project itself")
        ->needs(run)
        ->excludes(save);
    app.add_option("--jobs", raw.jobs, "With --run: personas at a time")
        ->check(CLI::Range(1, 250).description(""))
        ->type_name("N")
        ->needs(run)
        ->capture_default_str();
    app.add_flag("--quiet", raw.quiet, "No line for each exchange, no progress, no summary");
}

ModelChoice modelsFrom(const std::vector<std::string> &given)
{
    ModelChoice models;
    for (const std::string &each : given) {
        const QString text = QString::fromStdString(each);
        if (const qsizetype equals = text.indexOf(u'='); equals >= 0)
            models.instead.insert(text.first(equals), text.sliced(equals + 1));
        else
            models.always = text;
    }
    return models;
}

QUrl endpointFrom(const std::string &text)
{
    const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    const bool local = url.host() == "localhost"_L1 || QHostAddress(url.host()).isLoopback();
    if (!url.isValid() || url.host().isEmpty() || (url.scheme() != "https"_L1 && url.scheme() != "http"_L1))
        throw CLI::ValidationError("--to", "wants an http or https address");
    if (url.scheme() == "http"_L1 && !local)
        throw CLI::ValidationError("--to", "plain http goes to this machine only, since the key would go in the clear");
    if (!url.userInfo().isEmpty())
        throw CLI::ValidationError("--to", "takes no user name or password; see --key-env");
    return url;
}

Options cooked(const Raw &raw)
{
    if (!raw.run.empty() && raw.save.empty() && !raw.inPlace)
        throw CLI::ValidationError("--run", "wants --save FILE or --in-place");
    return {.to = endpointFrom(raw.to),
            .roots = QString::fromStdString(raw.roots),
            .keyEnv = QString::fromStdString(raw.keyEnv),
            .models = modelsFrom(raw.models),
            .format = raw.format,
            .timeout = std::chrono::seconds(raw.timeout),
            .retries = raw.retries,
            .record = QString::fromStdString(raw.record),
            .replay = QString::fromStdString(raw.replay),
            .budget = {.requests = raw.maxRequests, .tokens = raw.maxTokens},
            .run = QString::fromStdString(raw.run),
            .save = QString::fromStdString(raw.save),
            .inPlace = raw.inPlace,
            .jobs = raw.jobs,
            .quiet = raw.quiet};
}

} // namespace

std::variant<Options, int> readOptions(int argc, char *argv[])
{
    CLI::App app("Opens Orrinet's window, or runs a project without one, with a bridge to an endpoint of your choice.\n"
                 "The key of the preferences goes to that endpoint and nowhere else.",
                 "orrinet-bridge");
    app.footer("Exit status: 0 all pairs answered, 1 some open, 2 usage, 3 file can't be read or written, "
               "4 no endpoint.");
    app.set_version_flag("--version", versionText());
    Raw raw;
    addEndpointOptions(app, raw);
    addRecordOptions(app, raw);
    addRunOptions(app, raw);
    try {
        app.parse(argc, argv);
        return cooked(raw);
    } catch (const CLI::ParseError &end) {
        return app.exit(end) == 0 ? 0 : int(Exit::Usage);
    }
}

} // namespace bridge
