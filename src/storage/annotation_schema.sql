-- Tables of an annotation database.
--
-- Run on a connection with SpatiaLite loaded and its metadata present (the creating function opens
-- the new file through CSpatialiteHandler::OpenByCreate first). The module itself never creates,
-- alters or drops these tables; it only reads and writes rows.
--
-- Node tables: folder, layer, shape (features). Node identity is the text uuid; '' means "none".
-- Column order matters: the data model reads "SELECT * FROM folder" and "SELECT * FROM layer" by
-- column position, so new columns may only be added at the end of a table.

CREATE TABLE folder (
  uuid      TEXT NOT NULL UNIQUE,
  puuid     TEXT DEFAULT '',
  type      INTEGER DEFAULT 0,
  name      TEXT DEFAULT '',
  index_id  TEXT DEFAULT ''
);
CREATE INDEX idx_folder_puuid ON folder(puuid);

-- A layer's parent is a folder (folder_puuid) or a layer (layer_puuid); the other column is ''.
--
-- The order rebuilder selects children with "layer.folder_uuid = '...'" and
-- "layer.layer_uuid = '...'", names that no insert writes. Rather than a second pair of stored
-- columns that could disagree with the first, folder_uuid and layer_uuid are generated columns that
-- always read the same values as folder_puuid and layer_puuid. They stand after index_id so that
-- the positions read by "SELECT * FROM layer" are unchanged.
CREATE TABLE layer (
  uuid             TEXT NOT NULL UNIQUE,
  folder_puuid     TEXT DEFAULT '',
  layer_puuid      TEXT DEFAULT '',
  type             INTEGER DEFAULT 0,
  name             TEXT DEFAULT '',
  min_level        INTEGER DEFAULT 0,
  max_level        INTEGER DEFAULT 21,
  min_name_level   INTEGER DEFAULT 0,
  max_name_level   INTEGER DEFAULT 21,
  min_x            REAL DEFAULT 0,
  min_y            REAL DEFAULT 0,
  max_x            REAL DEFAULT 0,
  max_y            REAL DEFAULT 0,
  wkt              TEXT DEFAULT '',
  property_header  TEXT DEFAULT '',
  index_id         TEXT DEFAULT '',
  folder_uuid      TEXT GENERATED ALWAYS AS (folder_puuid) VIRTUAL,
  layer_uuid       TEXT GENERATED ALWAYS AS (layer_puuid) VIRTUAL
);
CREATE INDEX idx_layer_folder_puuid ON layer(folder_puuid);
CREATE INDEX idx_layer_layer_puuid ON layer(layer_puuid);

-- Features. The row id is used for paging and by the spatial index idx_shape_geom; a geometry
-- replacement deletes and re-inserts the row, so createtime and modifytime take their defaults.
CREATE TABLE shape (
  uuid        TEXT NOT NULL UNIQUE,
  puuid       TEXT DEFAULT '',
  type        INTEGER DEFAULT 0,
  name        TEXT DEFAULT '',
  index_id    TEXT DEFAULT '',
  createtime  TEXT DEFAULT (strftime('%Y-%m-%d %H:%M:%f', 'now')),
  modifytime  TEXT DEFAULT (strftime('%Y-%m-%d %H:%M:%f', 'now'))
);
CREATE INDEX idx_shape_puuid ON shape(puuid);
-- Mixed kinds (points to multi polygons) in one column: GEOMETRY, always with Z, WGS 84.
SELECT AddGeometryColumn('shape', 'geom', 4326, 'GEOMETRY', 'XYZ');
SELECT CreateSpatialIndex('shape', 'geom');

-- Sibling order: a doubly linked list per parent. Inserts write one column of each neighbour pair
-- (_layer_ for a layer neighbour, _shape_ for a feature); the other keeps the default ''.
CREATE TABLE folder_order (
  uuid        TEXT NOT NULL UNIQUE,
  left_uuid   TEXT DEFAULT '',
  right_uuid  TEXT DEFAULT '',
  order_num   INTEGER DEFAULT 0
);
CREATE TABLE layer_order (
  uuid              TEXT NOT NULL UNIQUE,
  left_shape_uuid   TEXT DEFAULT '',
  left_layer_uuid   TEXT DEFAULT '',
  right_shape_uuid  TEXT DEFAULT '',
  right_layer_uuid  TEXT DEFAULT '',
  order_num         INTEGER DEFAULT 0
);
CREATE TABLE shape_order (
  uuid              TEXT NOT NULL UNIQUE,
  left_shape_uuid   TEXT DEFAULT '',
  left_layer_uuid   TEXT DEFAULT '',
  right_shape_uuid  TEXT DEFAULT '',
  right_layer_uuid  TEXT DEFAULT '',
  order_num         INTEGER DEFAULT 0
);

-- Satellite rows, keyed by id (read back with sqlite3_last_insert_rowid) and listed in the owner's
-- index_id text. Status type 1 is the status mask; type 2 a layer's maximum child count.
CREATE TABLE folder_status (
  id     INTEGER PRIMARY KEY,
  puuid  TEXT DEFAULT '',
  type   INTEGER DEFAULT 1,
  value  INTEGER,
  data   BLOB
);
CREATE INDEX idx_folder_status_puuid ON folder_status(puuid);
CREATE TABLE layer_status (
  id     INTEGER PRIMARY KEY,
  puuid  TEXT DEFAULT '',
  type   INTEGER DEFAULT 1,
  value  INTEGER,
  data   BLOB
);
CREATE INDEX idx_layer_status_puuid ON layer_status(puuid);
CREATE TABLE shape_status (
  id     INTEGER PRIMARY KEY,
  puuid  TEXT DEFAULT '',
  type   INTEGER DEFAULT 1,
  value  INTEGER,
  data   BLOB
);
CREATE INDEX idx_shape_status_puuid ON shape_status(puuid);

CREATE TABLE layer_style (
  id       INTEGER PRIMARY KEY,
  puuid    TEXT DEFAULT '',
  format   INTEGER DEFAULT 0,
  content  TEXT DEFAULT ''
);
CREATE INDEX idx_layer_style_puuid ON layer_style(puuid);
CREATE TABLE shape_style (
  id       INTEGER PRIMARY KEY,
  puuid    TEXT DEFAULT '',
  format   INTEGER DEFAULT 0,
  content  TEXT DEFAULT ''
);
CREATE INDEX idx_shape_style_puuid ON shape_style(puuid);

CREATE TABLE layer_userdata (
  id         INTEGER PRIMARY KEY,
  puuid      TEXT DEFAULT '',
  data_type  INTEGER DEFAULT 0,
  key        TEXT DEFAULT '',
  value      TEXT DEFAULT ''
);
CREATE INDEX idx_layer_userdata_puuid ON layer_userdata(puuid);
CREATE TABLE shape_userdata (
  id         INTEGER PRIMARY KEY,
  puuid      TEXT DEFAULT '',
  data_type  INTEGER DEFAULT 0,
  key        TEXT DEFAULT '',
  value      TEXT DEFAULT ''
);
CREATE INDEX idx_shape_userdata_puuid ON shape_userdata(puuid);

CREATE TABLE shape_property (
  id           INTEGER PRIMARY KEY,
  puuid        TEXT DEFAULT '',
  field_type   INTEGER DEFAULT 0,
  field_class  TEXT DEFAULT '',
  field_name   TEXT DEFAULT '',
  value        TEXT DEFAULT ''
);
CREATE INDEX idx_shape_property_puuid ON shape_property(puuid);

CREATE TABLE shape_enclosure (
  id           INTEGER PRIMARY KEY,
  puuid        TEXT DEFAULT '',
  type         INTEGER DEFAULT 1,
  description  TEXT DEFAULT '',
  local_path   TEXT DEFAULT '',
  url          TEXT DEFAULT '',
  content      BLOB
);
CREATE INDEX idx_shape_enclosure_puuid ON shape_enclosure(puuid);
