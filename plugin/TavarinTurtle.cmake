# Writes what is made from PlugInTable.cmake: a header for the code, and Turtle for workstations.

# tavarin_write_plugin_table(<file>)
function(tavarin_write_plugin_table file)
    foreach(kind ${TAVARIN_PLUGIN_KINDS})
        tavarin_columns("${kind}" code part name text)
        string(APPEND kind_names "    ${code},  ///< ${text}\n")
        foreach(width ${TAVARIN_PLUGIN_WIDTHS})
            tavarin_columns("${width}" channels width_part width_name)
            string(APPEND variants
                "    {\"${TAVARIN_PLUGIN_URI}:${part}${width_part}\", PlugInKind::${code}, ${channels}},\n")
        endforeach()
    endforeach()
    foreach(port ${TAVARIN_PLUGIN_PORTS})
        tavarin_columns("${port}" code symbol name form default minimum maximum text)
        string(APPEND port_names "    port${code},  ///< ${text}\n")
    endforeach()
    foreach(mode ${TAVARIN_PLUGIN_MODES})
        tavarin_columns("${mode}" code name text)
        string(APPEND mode_names "    ${code},  ///< ${text}\n")
    endforeach()
    foreach(result ${TAVARIN_PLUGIN_RESULTS})
        tavarin_columns("${result}" code name)
        string(APPEND result_names "    ${code},\n")
        string(APPEND result_texts "    \"${name}\",\n")
    endforeach()
    configure_file("${CMAKE_CURRENT_SOURCE_DIR}/PlugInTable.h.in" "${file}" @ONLY)
endfunction()

# tavarin_columns(<row> <variable>...): the columns of a row of the table.
macro(tavarin_columns row)
    string(REPLACE "|" ";|" columns "|${row}")
    list(REMOVE_AT columns 0)
    foreach(column ${ARGN})
        list(POP_FRONT columns ${column})
        string(SUBSTRING "${${column}}" 1 -1 ${column})
    endforeach()
endmacro()

# Named values of a control port.
function(tavarin_scale_points rows result)
    set(value 0)
    set(points "")
    set(separator "")
    foreach(row ${${rows}})
        tavarin_columns("${row}" code name)
        string(APPEND points "${separator}[ rdfs:label \"${name}\" ; rdf:value ${value} ]")
        set(separator " ,\n            ")
        math(EXPR value "${value} + 1")
    endforeach()
    set(${result} "        lv2:portProperty lv2:integer , lv2:enumeration ;
        lv2:scalePoint ${points} ;\n" PARENT_SCOPE)
endfunction()

# What the form of a port adds to it.
function(tavarin_port_form form result types)
    set(${types} "lv2:InputPort , lv2:ControlPort" PARENT_SCOPE)
    set(text "")
    if(form STREQUAL "position")
        set(${types} "lv2:InputPort , atom:AtomPort" PARENT_SCOPE)
        set(text "        atom:bufferType atom:Sequence ;
        atom:supports time:Position ;
        lv2:designation lv2:control ;
        lv2:portProperty lv2:connectionOptional ;\n")
    elseif(form STREQUAL "message")
        # It does not say that it supports patch:Message: workstations that know no property but
        # those that they may write would then warn of every result.
        set(${types} "lv2:OutputPort , atom:AtomPort" PARENT_SCOPE)
        set(text "        atom:bufferType atom:Sequence ;
        rsz:minimumSize 1024 ;
        lv2:portProperty lv2:connectionOptional ;\n")
    elseif(form STREQUAL "toggle")
        set(text "        lv2:portProperty lv2:toggled , lv2:integer ;\n")
    elseif(form STREQUAL "modes")
        tavarin_scale_points(TAVARIN_PLUGIN_MODES text)
    elseif(form STREQUAL "results")
        set(${types} "lv2:OutputPort , lv2:ControlPort" PARENT_SCOPE)
        tavarin_scale_points(TAVARIN_PLUGIN_RESULTS text)
    elseif(form STREQUAL "track")
        set(text "        lv2:portProperty lv2:integer ;\n")
    elseif(form STREQUAL "freewheel")
        set(text "        lv2:designation lv2:freeWheeling ;
        lv2:portProperty lv2:toggled , lv2:connectionOptional , props:notOnGUI ;\n")
    elseif(form STREQUAL "percent")
        set(${types} "lv2:OutputPort , lv2:ControlPort" PARENT_SCOPE)
        set(text "        units:unit units:pc ;\n")
    endif()
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

# The ports of a plug-in with this many channels.
function(tavarin_ports channels result)
    set(index 0)
    set(ports "")
    set(separator "")
    foreach(port ${TAVARIN_PLUGIN_PORTS})
        tavarin_columns("${port}" code symbol name form default minimum maximum text)
        tavarin_port_form(${form} form_text types)
        if(NOT default STREQUAL "")
            string(APPEND form_text "        lv2:default ${default} ;
        lv2:minimum ${minimum} ;
        lv2:maximum ${maximum} ;\n")
        endif()
        string(APPEND ports "${separator}[
        a ${types} ;
        lv2:index ${index} ;
        lv2:symbol \"${symbol}\" ;
        lv2:name \"${name}\" ;
        rdfs:comment \"${text}\" ;
${form_text}    ]")
        set(separator " , ")
        math(EXPR index "${index} + 1")
    endforeach()
    foreach(channel RANGE 1 ${channels})
        foreach(side Input Output)
            string(SUBSTRING "${side}" 0 2 symbol)
            string(TOLOWER "${symbol}" symbol)
            if(side STREQUAL "Output")
                set(symbol out)
            endif()
            set(place "")
            if(channels EQUAL 2)
                list(GET TAVARIN_PLUGIN_SIDES ${channel} place)
                set(place "        lv2:designation pg:${place} ;\n")
            endif()
            string(APPEND ports " , [
        a lv2:${side}Port , lv2:AudioPort ;
        lv2:index ${index} ;
        lv2:symbol \"${symbol}_${channel}\" ;
        lv2:name \"${side} ${channel}\" ;
${place}    ]")
            math(EXPR index "${index} + 1")
        endforeach()
    endforeach()
    set(${result} "${ports}" PARENT_SCOPE)
endfunction()

set(TAVARIN_PLUGIN_SIDES none left right)

# tavarin_write_turtle(<directory> <has_window>): manifest.ttl, tavarin.ttl and, with a window,
# tavarin_ui.ttl.
function(tavarin_write_turtle directory has_window)
    set(TAVARIN_PLUGIN_UIS "")
    if(has_window)
        set(TAVARIN_PLUGIN_UIS "    ui:ui <${TAVARIN_PLUGIN_URI}:embedded-window> , <${TAVARIN_PLUGIN_URI}:window> , <${TAVARIN_PLUGIN_URI}:external-window> ;\n")
    endif()
    set(TAVARIN_PLUGIN_NOTIFICATIONS "")
    set(manifest "")
    set(plugins "")
    foreach(kind ${TAVARIN_PLUGIN_KINDS})
        tavarin_columns("${kind}" code part name text)
        foreach(width ${TAVARIN_PLUGIN_WIDTHS})
            tavarin_columns("${width}" channels width_part width_name)
            set(uri "${TAVARIN_PLUGIN_URI}:${part}${width_part}")
            tavarin_ports(${channels} ports)
            string(APPEND TAVARIN_PLUGIN_NOTIFICATIONS "    ui:portNotification [
        ui:plugin <${uri}> ; lv2:symbol \"notify\" ; ui:protocol atom:eventTransfer ] ;\n")
            string(CONFIGURE "<@uri@>
    a lv2:Plugin ;
    lv2:binary <tavarin.so> ;
    rdfs:seeAlso <tavarin.ttl> .\n\n" entry @ONLY)
            string(APPEND manifest "${entry}")
            string(CONFIGURE "<@uri@>
    a lv2:Plugin ;
    doap:name \"@name@@width_name@\" ;
    rdfs:comment \"@text@\" ;
    lv2:project <@TAVARIN_PLUGIN_URI@> ;
    lv2:minorVersion @PROJECT_VERSION_MINOR@ ;
    lv2:microVersion @PROJECT_VERSION_PATCH@ ;
    lv2:optionalFeature lv2:hardRTCapable , urid:map ;
    lv2:extensionData state:interface ;
    patch:readable <@TAVARIN_PLUGIN_URI@:message> ;
@TAVARIN_PLUGIN_UIS@    lv2:port @ports@ .\n\n" entry @ONLY)
            string(APPEND plugins "${entry}")
        endforeach()
    endforeach()
    foreach(file manifest tavarin)
        configure_file("${CMAKE_CURRENT_SOURCE_DIR}/${file}.ttl.in" "${directory}/${file}.ttl" @ONLY)
    endforeach()
    if(has_window)
        configure_file("${CMAKE_CURRENT_SOURCE_DIR}/tavarin_ui.ttl.in" "${directory}/tavarin_ui.ttl"
            @ONLY)
        file(READ "${directory}/manifest.ttl" text)
        configure_file("${CMAKE_CURRENT_SOURCE_DIR}/manifest_ui.ttl.in"
            "${CMAKE_CURRENT_BINARY_DIR}/manifest_ui.ttl" @ONLY)
        file(READ "${CMAKE_CURRENT_BINARY_DIR}/manifest_ui.ttl" more)
        file(WRITE "${directory}/manifest.ttl" "${text}${more}")
    endif()
endfunction()
