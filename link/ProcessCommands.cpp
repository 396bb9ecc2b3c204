#include "link/CommandTexts.h"
#include "link/ScriptWriter.h"
#include "link/TANClientInterProcess.h"
#include "platform/NumberText.h"

bool CTANClientInterProcess::CreateAPT(bool fAudioSuite, int guideTrack, std::int64_t guideStart,
                                       std::int64_t guideEnd, int dubTrack, std::int64_t dubStart,
                                       std::int64_t dubEnd, int alignedTrack) {
    CScriptWriter script;
    script << szOpenDocument.For(fAudioSuite)                                  //
           << "idGuide = GetTrackID(" << guideTrack << ")\n"                   //
           << "idDub = GetTrackID(" << dubTrack << ")\n"                       //
           << "idAligned = GetTrackID(" << alignedTrack << ")\n"               //
           << "Guide = { IOType=1, Track=idGuide, Start=" << guideStart        //
           << ", End=" << guideEnd << "}\n"                                    //
           << "Dub = { IOType=2, Track=idDub, Start=" << dubStart              //
           << ", End=" << dubEnd << "}\n"                                      //
           << "Inputs = { Guide, Dub }\n"                                      //
           << "Aligned = { Track=idAligned }\n"                                //
           << "Outputs = { Aligned }\n"                                        //
           << "idProcess = CreateProcess(\"APT\", \"PT\", Inputs, Outputs)\n"  //
           << "MoveDisplayToPosition(" << guideStart << ")\n"                  //
           << szCloseDocument;
    std::string strReply;
    return SendCommand(script.Text(), strReply);
}

bool CTANClientInterProcess::CreateDoubler(bool fAudioSuite, int inputTrack, std::int64_t start,
                                           std::int64_t end, int /*unused*/, int outputTrack) {
    CScriptWriter script;
    script << szOpenDocument.For(fAudioSuite)                                      //
           << "idInput = GetTrackID(" << inputTrack << ")\n"                       //
           << "idOutput = GetTrackID(" << outputTrack << ")\n"                     //
           << "Input = { IOType=1, Track=idInput, Start=" << start                 //
           << ", End=" << end << "}\n"                                             //
           << "Inputs = { Input }\n"                                               //
           << "Output = { Track=idOutput }\n"                                      //
           << "Outputs = { Output }\n"                                             //
           << "idProcess = CreateProcess(\"Doubler\", \"PT\", Inputs, Outputs)\n"  //
           << "MoveDisplayToPosition(" << start << ")\n"                           //
           << szCloseDocument;
    std::string strReply;
    return SendCommand(script.Text(), strReply);
}

void CTANClientInterProcess::ClearTrack(bool fAudioSuite, int track) {
    CScriptWriter script;
    script << szOpenDocument.For(fAudioSuite)               //
           << "idTrack = GetTrackID(" << track << ")\n"     //
           << "idMarker = GetMarkerTrackID(idTrack, 0)\n"   //
           << "while CountMarkerAreas(idMarker) > 0 do\n"   //
           << "idSrcArea = GetMarkerAreaID(idMarker, 0)\n"  //
           << "DeleteMarkerArea(idSrcArea)\n"               //
           << "end\n"                                       //
           << "while GetRegionCount(idTrack) > 0 do\n"      //
           << "idRegion = GetRegionID(idTrack, 0)\n"        //
           << "DeleteRegion(idRegion)\n"                    //
           << "end\n"                                       //
           << szCloseDocument;
    std::string strReply;
    SendCommand(script.Text(), strReply);
}

double CTANClientInterProcess::GetLinkSMPTEOffset(bool fAudioSuite) {
    CScriptWriter script;
    script << szOpenDocumentTrue.For(fAudioSuite)  //
           << "print(GetLinkSMPTEOffset())\n"      //
           << szCloseDocument;
    std::string strReply;
    return SendCommand(script.Text(), strReply) ? ParseDouble(strReply.c_str()) : 0.0;
}
