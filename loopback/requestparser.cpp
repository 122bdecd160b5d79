#include "loopback/requestparser.h"

#include <llhttp.h>

namespace loopback {

struct RequestParser::State
{
    State();

    llhttp_settings_t settings;
    llhttp_t parser;
    QByteArray incoming;
    qsizetype parsed = 0; // of `incoming`
    Request request;
    bool failed = false;

    static State *of(llhttp_t *source) { return static_cast<State *>(source->data); }
    void finishRequest();
};

RequestParser::State::State()
{
    llhttp_settings_init(&settings);
    settings.on_message_begin = [](llhttp_t *source) {
        of(source)->request = {};
        return 0;
    };
    settings.on_url = [](llhttp_t *source, const char *at, size_t length) {
        of(source)->request.target.append(at, qsizetype(length));
        return 0;
    };
    // Names and values may come in pieces: a name begins where the last value was complete.
    settings.on_header_field = [](llhttp_t *source, const char *at, size_t length) {
        QList<Header> &headers = of(source)->request.headers;
        if (headers.isEmpty() || !headers.constLast().second.isNull())
            headers.emplaceBack(QByteArray(), QByteArray());
        headers.last().first.append(at, qsizetype(length));
        return 0;
    };
    settings.on_header_value = [](llhttp_t *source, const char *at, size_t length) {
        of(source)->request.headers.last().second.append(at, qsizetype(length));
        return 0;
    };
    settings.on_header_value_complete = [](llhttp_t *source) {
        QByteArray &value = of(source)->request.headers.last().second;
        if (value.isNull())
            value = QByteArray("", 0);
        return 0;
    };
    // What has no version is HTTP/0.9: a line without a head.
    settings.on_headers_complete = [](llhttp_t *source) { return source->http_major == 1 ? 0 : -1; };
    settings.on_body = [](llhttp_t *source, const char *at, size_t length) {
        of(source)->request.body.append(at, qsizetype(length));
        return 0;
    };
    // One request at a time: its bytes are told from those of the next by where the parser stopped.
    settings.on_message_complete = [](llhttp_t * /*source*/) { return int(HPE_PAUSED); };
    llhttp_init(&parser, HTTP_REQUEST, &settings);
    parser.data = this;
}

/// Gives the request what only its bytes tell, and takes them off the buffer.
void RequestParser::State::finishRequest()
{
    static constexpr QByteArrayView emptyLine("\r\n\r\n");
    // Empty lines before a request are passed over.
    qsizetype begin = 0;
    while (incoming.at(begin) == '\r' || incoming.at(begin) == '\n')
        ++begin;
    const qsizetype end = incoming.indexOf(emptyLine, begin) + emptyLine.size();
    request.head = incoming.sliced(begin, end - begin);
    request.requestLine = request.head.first(request.head.indexOf('\r'));
    request.method = llhttp_method_name(llhttp_method_t(llhttp_get_method(&parser)));
    incoming.remove(0, parsed);
    parsed = 0;
}

RequestParser::RequestParser()
    : state(std::make_unique<State>())
{
}

RequestParser::~RequestParser() = default;

void RequestParser::feed(const QByteArray &bytes)
{
    state->incoming += bytes;
}

std::optional<Request> RequestParser::next()
{
    if (state->failed || state->parsed == state->incoming.size())
        return std::nullopt;
    const char *begin = state->incoming.constData();
    const auto outcome =
        llhttp_execute(&state->parser, begin + state->parsed, size_t(state->incoming.size() - state->parsed));
    if (outcome == HPE_OK) {
        state->parsed = state->incoming.size();
        return std::nullopt;
    }
    if (outcome != HPE_PAUSED && outcome != HPE_PAUSED_UPGRADE) {
        state->failed = true;
        return std::nullopt;
    }
    state->parsed = llhttp_get_error_pos(&state->parser) - begin;
    state->finishRequest();
    llhttp_reset(&state->parser);
    return std::exchange(state->request, {});
}

bool RequestParser::failed() const
{
    return state->failed;
}

qsizetype RequestParser::waiting() const
{
    return state->incoming.size();
}

} // namespace loopback
