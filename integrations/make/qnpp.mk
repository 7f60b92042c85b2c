# Preprocessing with qnpp, for GNU make:
#
#   QNPP_SOURCES := table.c.in
#   QNPPFLAGS := -Iinclude -DLEVEL=2
#   include $(shell pkg-config --variable=makefile qnpp)
#
# Each source loses its ".in": table.c is made from table.c.in. Set before this file is included:
#
#   QNPP_SOURCES   the sources, each with ".in" at the end of its name
#   QNPPFLAGS      options for qnpp
#   QNPP           the program; by default the one installed together with this file, otherwise the one on the path
#   QNPP_DEPS_DIR  a folder for what is known about dependencies, .qnpp by default
#
# Afterwards QNPP_RESULTS holds the names of the results.
#
# A result is made again when its source or a header reached from it has changed. After an error it does not exist.
# Names of headers may hold blanks and semicolons; those of sources may not, since make has no such names.

# What is made without naming a goal stays the caller's choice, even if this file comes first.
qnpp_goal := $(.DEFAULT_GOAL)

qnpp_folder := $(abspath $(dir $(lastword $(MAKEFILE_LIST))))
QNPP ?= $(or $(wildcard $(abspath $(qnpp_folder)/../../bin/qnpp)),qnpp)
QNPP_DEPS_DIR ?= .qnpp
QNPP_RESULTS := $(QNPP_SOURCES:.in=)

# One file for each result, without folders in between: slashes become underscores.
qnpp_depfile = $(QNPP_DEPS_DIR)/$(subst /,_,$(1)).d

$(QNPP_RESULTS): %: %.in
	@mkdir -p '$(QNPP_DEPS_DIR)'
	@rm -f '$@'
	$(QNPP) $(QNPPFLAGS) -o '$@.part' '$<' || { rm -f '$@.part'; exit 1; }
	@sh '$(qnpp_folder)/write-depfile.sh' '$@.part' '$@' '$(QNPP_DEPS_DIR)' >'$(call qnpp_depfile,$@)'
	@mv '$@.part' '$@'

include $(wildcard $(foreach result,$(QNPP_RESULTS),$(call qnpp_depfile,$(result))))

.DEFAULT_GOAL := $(qnpp_goal)
