-- A store of version 1.
CREATE TABLE users (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, password TEXT NOT NULL,
                    ptz INTEGER NOT NULL DEFAULT 0);
CREATE TABLE sessions (id INTEGER PRIMARY KEY AUTOINCREMENT, token_hash TEXT NOT NULL UNIQUE, user_id INTEGER NOT NULL,
                       client TEXT NOT NULL, last_used INTEGER NOT NULL);
CREATE INDEX sessions_of_user ON sessions (user_id);
CREATE TABLE groups (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL, parent_id INTEGER NOT NULL,
                     user_id INTEGER NOT NULL, shared_folder INTEGER NOT NULL, sequence INTEGER NOT NULL);
CREATE TABLE documents (id INTEGER PRIMARY KEY AUTOINCREMENT, text TEXT NOT NULL);
CREATE TABLE views (id INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT NOT NULL, name TEXT NOT NULL,
                    group_id INTEGER NOT NULL, user_id INTEGER NOT NULL, sequence INTEGER NOT NULL,
                    auto_cycle INTEGER NOT NULL, cycle_time INTEGER NOT NULL, document_id INTEGER NOT NULL);
CREATE INDEX views_of_document ON views (document_id);
CREATE TABLE shares (view_id INTEGER NOT NULL, user_id INTEGER NOT NULL, PRIMARY KEY (view_id, user_id)) WITHOUT ROWID;
CREATE TABLE changes (number INTEGER PRIMARY KEY AUTOINCREMENT, kind INTEGER NOT NULL, object_id INTEGER NOT NULL,
                      session_id INTEGER NOT NULL, content_changed INTEGER NOT NULL, before TEXT NOT NULL,
                      after TEXT NOT NULL, head TEXT NOT NULL, shared_head TEXT NOT NULL, document_id INTEGER NOT NULL);
CREATE INDEX changes_of_document ON changes (document_id);
CREATE TABLE default_views (user_id INTEGER PRIMARY KEY, type INTEGER NOT NULL, view_id INTEGER NOT NULL);
CREATE TABLE areas (id INTEGER PRIMARY KEY, name TEXT NOT NULL);
CREATE TABLE elements (id INTEGER PRIMARY KEY, type INTEGER NOT NULL, name TEXT NOT NULL, site_id INTEGER NOT NULL);
CREATE TABLE seeded (kind TEXT NOT NULL, id INTEGER NOT NULL, digest TEXT NOT NULL,
                     PRIMARY KEY (kind, id)) WITHOUT ROWID;
PRAGMA user_version=1;
