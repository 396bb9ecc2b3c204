#include "host/ScriptPrelude.h"

std::string_view const kScriptPrelude = R"lua(
local globals, native = ...
local check, raise, scan, concat = native.check, native.raise, native.scan, native.concat
local pcall, find, select, sub = native.pcall, native.find, native.select, native.sub
local tonumber, tostring, type = native.tonumber, native.tostring, native.type
local tointeger, maxinteger = native.tointeger, native.maxinteger
local string, table = globals.string, globals.table

local function refuse(n, name, expected, value)
    raise("bad argument #" .. n .. " to '" .. name .. "' (" .. expected .. " expected, got " ..
        (value == nil and "no value" or type(value)) .. ")")
end

local function text(value, n, name)
    local kind = type(value)
    if kind == "string" then return value end
    if kind == "number" then return tostring(value) end
    refuse(n, name, "string", value)
end

local function whole(value, n, name, default)
    if value == nil and default then return default end
    local number = tointeger(tonumber(value))
    if number then return number end
    refuse(n, name, "whole number", value)
end

-- A script that is stopped must not go on behind a protected call.
local function settle(...)
    check()
    return ...
end

function globals.pcall(...)
    return settle(pcall(...))
end

local function handled(handler, good, ...)
    check()
    if good then return true, ... end
    return false, select(2, settle(pcall(handler, ...)))
end

function globals.xpcall(call, handler, ...)
    if type(handler) ~= "function" then refuse(2, "xpcall", "function", handler) end
    return handled(handler, pcall(call, ...))
end

function string.gmatch(s, pattern, init)
    s, pattern = text(s, 1, "gmatch"), text(pattern, 2, "gmatch")
    local from, last = whole(init, 3, "gmatch", 1), 0
    if from < 0 then from = #s + from + 1 end
    if from < 1 then from = 1 end
    local function deliver(first, after, ...)
        if not first then
            from = #s + 2
            return nil
        end
        from, last = after, after
        if select("#", ...) == 0 then return sub(s, first, after - 1) end
        return ...
    end
    return function()
        return deliver(scan(s, pattern, from, last, false))
    end
end

-- The pieces of a replacement text: strings as they are, numbers for captures.
local function pieces(replacement)
    local parts, from = {}, 1
    while true do
        local at = find(replacement, "%", from, true)
        if not at then break end
        parts[#parts + 1] = sub(replacement, from, at - 1)
        local mark = sub(replacement, at + 1, at + 1)
        if mark ~= "%" and not find(mark, "^%d$") then
            raise("invalid use of '%' in replacement string")
        end
        parts[#parts + 1] = mark == "%" and mark or tonumber(mark)
        from = at + 2
    end
    parts[#parts + 1] = sub(replacement, from)
    return parts
end

local function fill(parts, match, ...)
    local count, filled = select("#", ...), {}
    for n = 1, #parts do
        local part = parts[n]
        if type(part) == "number" then
            if part == 0 or (part == 1 and count == 0) then
                part = match
            elseif part > count then
                raise("invalid capture index %" .. part .. " in replacement string")
            else
                part = (select(part, ...))
            end
        end
        filled[n] = part
    end
    return concat(filled)
end

local function replacer(replacement)
    local kind = type(replacement)
    if kind == "number" then replacement, kind = tostring(replacement), "string" end
    if kind == "string" then
        if not find(replacement, "%", 1, true) then return function() return replacement end end
        local parts = pieces(replacement)
        return function(match, ...) return fill(parts, match, ...) end
    elseif kind == "table" then
        return function(match, ...)
            if select("#", ...) == 0 then return replacement[match] end
            return replacement[(...)]
        end
    elseif kind == "function" then
        return function(match, ...)
            if select("#", ...) == 0 then return (replacement(match)) end
            return (replacement(...))
        end
    end
    refuse(3, "gsub", "string/function/table", replacement)
end

function string.gsub(s, pattern, replacement, limit)
    s, pattern = text(s, 1, "gsub"), text(pattern, 2, "gsub")
    limit = whole(limit, 4, "gsub", maxinteger)
    local replace = replacer(replacement)
    local anchored = sub(pattern, 1, 1) == "^"
    local out, count, from, last, copied = {}, 0, 1, 0, 1
    local function deliver(first, after, ...)
        if not first then return false end
        local match = sub(s, first, after - 1)
        local value = replace(match, ...)
        local kind = type(value)
        if not value then
            value = match
        elseif kind ~= "string" and kind ~= "number" then
            raise("invalid replacement value (a " .. kind .. ")")
        end
        out[#out + 1] = sub(s, copied, first - 1)
        out[#out + 1] = value
        from, last, copied = after, after, after
        return true
    end
    while count < limit and deliver(scan(s, pattern, from, last, true)) do
        count = count + 1
        if anchored then break end
    end
    out[#out + 1] = sub(s, copied)
    return concat(out), count
end

local function list(value, name)
    if type(value) ~= "table" then
        refuse(1, name, "table", value)
    end
    return value
end

function table.pack(...)
    return { n = select("#", ...), ... }
end

function table.insert(values, ...)
    local size, count = #list(values, "insert"), select("#", ...)
    if count == 1 then
        values[size + 1] = (...)
        return
    end
    if count ~= 2 then raise("wrong number of arguments to 'insert'") end
    local place, value = ...
    place = whole(place, 2, "insert")
    if place < 1 or place > size + 1 then
        raise("bad argument #2 to 'insert' (position out of bounds)")
    end
    for n = size, place, -1 do values[n + 1] = values[n] end
    values[place] = value
end

function table.remove(values, place)
    local size = #list(values, "remove")
    if place == nil then place = size else place = whole(place, 2, "remove") end
    if place ~= size and (place < 1 or place > size + 1) then
        raise("bad argument #2 to 'remove' (position out of bounds)")
    end
    local removed = values[place]
    for n = place, size - 1 do values[n] = values[n + 1] end
    if place < size then place = size end
    values[place] = nil
    return removed
end

function table.move(source, first, last, place, target)
    list(source, "move")
    first, last = whole(first, 2, "move"), whole(last, 3, "move")
    place = whole(place, 4, "move")
    if target == nil then target = source end
    if type(target) ~= "table" then refuse(5, "move", "table", target) end
    if last < first then return target end
    if (first < 1 and last >= maxinteger + first) or place > maxinteger - (last - first) then
        raise("bad argument to 'move' (too many elements or wrap around)")
    end
    if place > last or place <= first or target ~= source then
        for n = 0, last - first do target[place + n] = source[first + n] end
    else
        for n = last - first, 0, -1 do target[place + n] = source[first + n] end
    end
    return target
end

-- Merging ends after a known number of steps whatever the order function answers.
function table.sort(values, before)
    local size = #list(values, "sort")
    if before == nil then
        before = function(a, b) return a < b end
    elseif type(before) ~= "function" then
        refuse(2, "sort", "function", before)
    end
    local from, to, width = {}, {}, 1
    for n = 1, size do from[n] = values[n] end
    while width < size do
        for start = 1, size, 2 * width do
            local left, right = start, start + width
            local leftEnd, rightEnd = right - 1, right + width - 1
            if rightEnd > size then rightEnd = size end
            for n = start, rightEnd do
                if right > rightEnd or (left <= leftEnd and not before(from[right], from[left])) then
                    to[n] = from[left]
                    left = left + 1
                else
                    to[n] = from[right]
                    right = right + 1
                end
            end
        end
        from, to, width = to, from, 2 * width
    end
    for n = 1, size do values[n] = from[n] end
end
)lua";
