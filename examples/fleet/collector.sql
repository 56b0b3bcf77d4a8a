-- The devices' entries: psql zephan <collector.sql
create table entries (
    device text not null,
    id text not null,           -- of zephan-log: the same whenever an entry is sent again
    time timestamptz,           -- none for text that belongs to no entry
    text text not null,
    arrival bigserial not null, -- their order, for each device that of its log
    primary key (device, id)
);
