// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_minf.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

template <class Header> MovAtom::Error KindOfMediaInformationAtom<Header>::CreateSampleTable()
{
    return OrNoMemory([this] {
        header = std::make_unique<Header>();
        if constexpr (std::is_same_v<Header, BaseMediaInformationHeaderAtom>)
            header->mediaInfo.Ensure(); // readers of other makes insist on it
        dataHandler = std::make_unique<HandlerReferenceAtom>(
            HandlerReferenceAtom::kDataHandler, HandlerReferenceAtom::kAliasSubtype, std::string());
        DataReference self;
        self.type = HandlerReferenceAtom::kAliasSubtype;
        self.flags = {0, 0, 1}; // the media data lie in this file
        dataInformation.Ensure().dataReference.Ensure().entries = {self};
        sampleTable = std::make_unique<SampleTableAtom>();
        return SetHandlerType(handlerType);
    });
}

template <class Header> MovAtom::Error KindOfMediaInformationAtom<Header>::Read(FileBuffer &buffer)
{
    return Read(buffer, kType);
}

template <class Header>
MovAtom::Error KindOfMediaInformationAtom<Header>::Read(FileBuffer &buffer, uint32_t expectedType)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, expectedType));
    const ChildRange children(scope, size);
    MOV_READ(scope, ReadOptionalChild(children, &header));
    MOV_READ(scope, ReadOptionalChild(children, &dataHandler));
    MOV_READ(scope, ReadOptionalChild(children, &dataInformation));
    sampleTable.reset();
    if (children.Find(SampleTableAtom::kType)) {
        MOV_READ(scope, MakeRoom(buffer, sizeof(SampleTableAtom), [this] {
                     sampleTable.Ensure().handlerType = handlerType;
                 }));
        MOV_READ(scope, sampleTable->Read(buffer));
    }
    return scope.Finish(size);
}

template <class Header> MovAtom::Error KindOfMediaInformationAtom<Header>::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteChild(buffer, header));
    MOV_WRITE(WriteChild(buffer, dataHandler));
    MOV_WRITE(WriteChild(buffer, dataInformation));
    return WriteChild(buffer, sampleTable);
}

template <class Header>
void KindOfMediaInformationAtom<Header>::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, Name());
    MovAtom::PrintToString(out, block.Depth());
    block.Child(header);
    block.Child(dataHandler);
    block.Child(dataInformation);
    block.Child(sampleTable);
}

template <class Header> uint64_t KindOfMediaInformationAtom<Header>::GetSize() const
{
    return MovAtom::GetSize() + SizeOfChild(header) + SizeOfChild(dataHandler)
        + SizeOfChild(dataInformation) + SizeOfChild(sampleTable);
}

template class KindOfMediaInformationAtom<VideoMediaInformationHeaderAtom>;
template class KindOfMediaInformationAtom<SoundMediaInformationHeaderAtom>;
template class KindOfMediaInformationAtom<BaseMediaInformationHeaderAtom>;

std::unique_ptr<MediaInformationAtom> VideoMediaInformationAtom::Clone() const
{
    return std::make_unique<VideoMediaInformationAtom>(*this);
}

std::unique_ptr<MediaInformationAtom> SoundMediaInformationAtom::Clone() const
{
    return std::make_unique<SoundMediaInformationAtom>(*this);
}

std::unique_ptr<MediaInformationAtom> BaseMediaInformationAtom::Clone() const
{
    return std::make_unique<BaseMediaInformationAtom>(*this);
}

std::unique_ptr<MediaInformationAtom> MakeMediaInformation(uint32_t handlerType)
{
    std::unique_ptr<MediaInformationAtom> atom;
    switch (handlerType) {
    case FourCC("vide"):
        atom = std::make_unique<VideoMediaInformationAtom>();
        break;
    case FourCC("soun"):
        atom = std::make_unique<SoundMediaInformationAtom>();
        break;
    case FourCC("tmcd"):
    case FourCC("text"):
    case FourCC("meta"):
        atom = std::make_unique<BaseMediaInformationAtom>();
        break;
    default:
        return nullptr;
    }
    atom->handlerType = handlerType;
    return atom;
}

} // namespace Tavro::MovParserLib
