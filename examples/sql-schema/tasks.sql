#include "limits.h"
#ifdef POSTGRES
#define KEY bigserial primary key
#else
#define KEY integer primary key autoincrement
#endif

-- What there is to do. This is a comment for the database only, so LONGEST_TITLE becomes a number in it.
create table task (
  id KEY,
  title text not null check (length(title) <= LONGEST_TITLE),
  state integer not null default STATE_OPEN
);

/* Quotes keep what they hold: 'STATE_DONE' is a text, STATE_DONE a number. */
insert into task (title, state) values ('set STATE_DONE', STATE_DONE), ('don''t panic', STATE_OPEN);
#ifdef WITH_SAMPLES
insert into task (title) values ('read http://localhost/help');
#endif
select id, title, state from task order by id;
