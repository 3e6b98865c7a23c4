-- Asks callrecordingd about the call of this session, and records it if a rule says so. README.md beside this file says
-- how to set it up. What comes from the network goes into the question, and into no file name.

local ask = "http://127.0.0.1:18080/decide?format=text"
local recordings = "/var/lib/freeswitch/recordings"

local function encoded(text)
    return (string.gsub(text or "", "[^%w]", function(c) return string.format("%%%02X", string.byte(c)) end))
end

local function variable(name)
    return session:getVariable(name) or ""
end

local function answer()
    local url = ask .. "&id=" .. encoded(variable("uuid"))
        .. "&from=" .. encoded(variable("caller_id_number")) .. "&from_host=" .. encoded(variable("sip_from_host"))
        .. "&to=" .. encoded(variable("destination_number")) .. "&to_host=" .. encoded(variable("sip_req_host"))
    session:execute("curl", url .. " connect-timeout 1 timeout 1")
    if variable("curl_response_code") ~= "200" then
        return nil
    end
    -- The tab at the end lets each of the five fields end with one: recorded, identifier, duration, type, destination.
    local fields = {}
    for field in string.gmatch(string.gsub(variable("curl_response_data"), "[\r\n]+$", "") .. "\t", "([^\t]*)\t") do
        table.insert(fields, field)
    end
    return fields
end

-- The limit for record_session, or "" for none.
local function limit(rule, duration)
    if string.match(duration, "^%d+$") then
        return tonumber(duration) > 0 and " " .. duration or ""
    end
    if duration ~= "" then
        freeswitch.consoleLog("WARNING", "the duration of rule " .. rule ..
            " is not a number of seconds: recording without a limit\n")
    end
    return ""
end

local fields = answer()
if fields == nil or (fields[1] ~= "yes" and fields[1] ~= "no") then
    freeswitch.consoleLog("ERR", "no decision whether to record call " .. variable("uuid") .. "\n")
    session:setVariable("recording_undecided", "true")
    -- To fail closed: session:hangup("NETWORK_OUT_OF_ORDER")
elseif fields[1] == "yes" then
    session:setVariable("recording_rule", fields[2])
    session:setVariable("RECORD_ANSWER_REQ", "true")
    session:execute("record_session",
        recordings .. "/rule" .. fields[2] .. "-" .. variable("uuid") .. ".wav" .. limit(fields[2], fields[3]))
end
