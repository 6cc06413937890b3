# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# The manual page with the lists of the program:
# cmake -D PROGRAM=quorvel -D PAGE=docs/man/quorvel.1 -D OUTPUT=quorvel.1 -P manual.cmake
execute_process(COMMAND ${PROGRAM} --man OUTPUT_VARIABLE lists COMMAND_ERROR_IS_FATAL ANY)
file(READ ${PAGE} page)
string(REPLACE ".\\\" LISTS\n" "${lists}" page "${page}")
file(WRITE ${OUTPUT} "${page}")
execute_process(COMMAND gzip -9 --no-name --force --keep ${OUTPUT})  # for Debian packages
