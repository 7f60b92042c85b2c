# Preprocessing with qnpp, for GNU make 4.2 or later:
#
#   QNPP_SOURCES := table.c.in
#   QNPPFLAGS := -Iinclude -DLEVEL=2
#   include $(shell pkg-config --variable=makefile qnpp)
#
# Each source loses its ".in": table.c is made from table.c.in. Set before this file is included:
#
#   QNPP_SOURCES        the sources, each with ".in" at the end of its name
#   QNPPFLAGS           options for qnpp-build, quoted as for the shell
#   QNPPFLAGS_<result>  more of them for one result: QNPPFLAGS_table.c := -DWIDE
#   QNPP_BUILD          the program; by default the one installed together with this file, otherwise the one on the path
#   QNPP_DEPS_DIR       a folder for what is known about dependencies, .qnpp by default
#
# Afterwards QNPP_RESULTS holds the names of the results.
#
# A result is made again when its source, a header reached from it, its options or the program has changed. One that comes
# out as before keeps its time stamp, so that nothing else is made again. After an error it does not exist.
#
# Names of headers may hold any character; those of sources cannot hold white space and a few more, since make has no such
# names.

# What is made without naming a goal stays the caller's choice, even if this file comes first.
qnpp_goal := $(.DEFAULT_GOAL)

qnpp_folder := $(abspath $(dir $(lastword $(MAKEFILE_LIST))))
QNPP_BUILD ?= $(or $(wildcard $(abspath $(qnpp_folder)/../../bin/qnpp-build)),qnpp-build)
QNPP_DEPS_DIR ?= .qnpp
QNPP_RESULTS := $(QNPP_SOURCES:.in=)

# What make would take for something else in the name of a file.
qnpp_odd := : ; = | % \ * ? [ ] \#
qnpp_open := (
qnpp_close := )
qnpp_refuse = $(error qnpp: make cannot work with the name '$(1)')
$(foreach source,$(filter-out %.in,$(QNPP_SOURCES)),\
  $(error qnpp: the name of the source '$(source)' does not end in ".in"))
$(foreach result,$(QNPP_RESULTS),\
  $(if $(strip $(foreach sign,$(qnpp_odd) $(qnpp_open) $(qnpp_close),$(findstring $(sign),$(result))) \
    $(filter ~% %&,$(result))),$(call qnpp_refuse,$(result))))

# The program as a file, to be depended on.
qnpp_program := $(wildcard $(if $(findstring /,$(QNPP_BUILD)),$(QNPP_BUILD),$(shell command -v $(QNPP_BUILD))))

# A word for the shell in which nothing is special.
qnpp_quote = '$(subst ','\'',$(1))'
qnpp_differ = $(or $(subst x$(1),,x$(2)),$(subst x$(2),,x$(1)))
# A file without folders in between for each result, and different ones for a/b and a_b.
qnpp_record = $(QNPP_DEPS_DIR)/$(subst /,_s,$(subst _,_u,$(1)))
qnpp_words = $(QNPP_BUILD) $(QNPPFLAGS) $(QNPPFLAGS_$(1))
qnpp_command = $(qnpp_words) --keep-unchanged -MP -MF $(call qnpp_quote,$(qnpp_record).d) \
  -MQ $(call qnpp_quote,$(qnpp_record).words) -o $(call qnpp_quote,$(1)) $(call qnpp_quote,$(1).in)

# The words of the last run are kept in a file that is written whenever the result is made. That file has the
# prerequisites of the result, and the result, which may be left as it was, has that file.
qnpp_has_changed = $(call qnpp_differ,$(qnpp_words),$(file <$(qnpp_record).words))
define qnpp_rule
$(qnpp_record).words: $(1).in $(qnpp_program) $(if $(qnpp_has_changed),qnpp_changed)
$(qnpp_record).words: qnpp_result := $(1)
$(1): $(qnpp_record).words
$(1): qnpp_result := $(1)
endef
$(foreach result,$(QNPP_RESULTS),$(eval $(subst $$,$$$$,$(call qnpp_rule,$(result)))))

QNPP_RECORDS := $(foreach result,$(QNPP_RESULTS),$(call qnpp_record,$(result)).words)

$(QNPP_DEPS_DIR):
	@mkdir -p $(call qnpp_quote,$@)

$(QNPP_RECORDS): | $(QNPP_DEPS_DIR)
	@rm -f $(call qnpp_quote,$@)
	$(call qnpp_command,$(qnpp_result))
	@printf '%s\n' $(call qnpp_quote,$(call qnpp_words,$(qnpp_result))) >$(call qnpp_quote,$@)

$(QNPP_RESULTS):
	@test -e $(call qnpp_quote,$@) || $(call qnpp_command,$(qnpp_result))

qnpp_changed:
.PHONY: qnpp_changed

include $(wildcard $(QNPP_RECORDS:.words=.d))
# Nothing makes these, and make need not look for what might.
$(QNPP_RECORDS:.words=.d): ;

.DEFAULT_GOAL := $(qnpp_goal)
