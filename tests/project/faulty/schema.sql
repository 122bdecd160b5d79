CREATE TABLE personas (uuid TEXT, name TEXT, attributes TEXT, created_at DATETIME, modified_at DATETIME);
;;  
	;
CREATE TABLE personas (uuid TEXT);
INSERT INTO personas (uuid, name)
    VALUES (1, 'Grüße');
no statement at all;
CREATE TABLE boilerplate (preamble TEXT, postamble TEXT);
CREATE TABLE questions (question_id INTEGER PRIMARY KEY, order_num INTEGER, prompt TEXT, reasoning_required INTEGER);
CREATE TABLE responses (persona_uuid TEXT, question_id INTEGER, text_answer TEXT, numeric_answer REAL,
    json_answer TEXT, created_at DATETIME)
