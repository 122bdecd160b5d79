CREATE TABLE metadata (
    key TEXT PRIMARY KEY,
    value TEXT
);

CREATE TABLE boilerplate (
    preamble TEXT,
    postamble TEXT
);

CREATE TABLE personas (
    uuid TEXT PRIMARY KEY,
    name TEXT,
    attributes TEXT,
    system_prompt TEXT,
    notes TEXT,
    created_at DATETIME,
    modified_at DATETIME
);

CREATE TABLE questions (
    question_id INTEGER PRIMARY KEY AUTOINCREMENT,
    order_num INTEGER,
    prompt TEXT,
    answer_type TEXT,
    labels TEXT,
    description TEXT,
    reasoning_required INTEGER DEFAULT 0,
    judge_question INTEGER DEFAULT 0,
    model TEXT,
    temperature REAL,
    search_enabled INTEGER DEFAULT 1,
    ask_when TEXT DEFAULT 'always',
    depends_on_question_id INTEGER REFERENCES questions(question_id),
    depends_on_answer TEXT,
    serial INTEGER,
    created_at DATETIME,
    modified_at DATETIME
);

CREATE TABLE question_attachments (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    question_id INTEGER REFERENCES questions(question_id),
    filename TEXT
);

CREATE TABLE responses (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    persona_uuid TEXT REFERENCES personas(uuid),
    question_id INTEGER REFERENCES questions(question_id),
    text_answer TEXT,
    numeric_answer REAL,
    json_answer TEXT,
    question_serial INTEGER,
    model TEXT,
    temperature REAL,
    created_at DATETIME,
    token_usage INTEGER
);

CREATE TABLE tags (
    id INTEGER PRIMARY KEY,
    name TEXT UNIQUE
);

CREATE TABLE persona_tags (
    persona_uuid TEXT REFERENCES personas(uuid),
    tag_id INTEGER REFERENCES tags(id),
    PRIMARY KEY (persona_uuid, tag_id)
);
