# Writes the header TARGET with each of FILES as a text: page.html becomes page::page_html.
set(header "// Generated.\n#pragma once\n\n#include <string_view>\n\nnamespace sim::page {\n")
foreach(file IN LISTS FILES)
    get_filename_component(name ${file} NAME)
    string(MAKE_C_IDENTIFIER ${name} name)
    file(READ ${file} bytes HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    # As numbers: a string literal may be too long for a compiler.
    string(APPEND header "\ninline constexpr char ${name}_bytes[] = {${bytes}};\n"
        "inline constexpr std::string_view ${name}(${name}_bytes, sizeof ${name}_bytes);\n")
endforeach()
file(WRITE ${TARGET} "${header}\n}  // namespace sim::page\n")
