# Writes the header TARGET with texts: each of TEXTS is a name, ":", and the files that make it up, with "+" between them. A text
# is in it as page::NAME, and as page::NAME_source what a policy calls it: its SHA-256 in base 64.
set(digits ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
set(header "// Generated.\n#pragma once\n\n#include <string_view>\n\nnamespace session::page {\n")
foreach(text IN LISTS TEXTS)
    string(REGEX MATCH "^([a-z_]+):(.*)$" text "${text}")
    set(name ${CMAKE_MATCH_1})
    string(REPLACE "+" ";" files "${CMAKE_MATCH_2}")
    set(bytes "")
    set(content "")
    foreach(file IN LISTS files)
        file(READ ${DIRECTORY}/${file} part HEX)
        string(APPEND bytes ${part})
        file(READ ${DIRECTORY}/${file} part)
        string(APPEND content "${part}")
    endforeach()
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    string(SHA256 hash "${content}")
    set(source "")
    foreach(at RANGE 0 60 6)  # three bytes are four digits; two remain
        string(SUBSTRING "${hash}00" ${at} 6 three)
        foreach(shift 18 12 6 0)
            math(EXPR digit "(0x${three} >> ${shift}) & 63")
            string(SUBSTRING ${digits} ${digit} 1 digit)
            string(APPEND source ${digit})
        endforeach()
    endforeach()
    string(REGEX REPLACE ".$" "=" source ${source})
    # As numbers: a string literal may be too long for a compiler.
    string(APPEND header "\ninline constexpr char ${name}_bytes[] = {${bytes}};\n"
        "inline constexpr std::string_view ${name}(${name}_bytes, sizeof ${name}_bytes);\n"
        "inline constexpr std::string_view ${name}_source = \"'sha256-${source}'\";\n")
endforeach()
file(WRITE ${TARGET} "${header}\n}  // namespace session::page\n")
