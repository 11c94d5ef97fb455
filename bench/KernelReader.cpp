// Reads an IGES file by Open CASCADE, and prints the milliseconds that its call took.

#include <IGESControl_Reader.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_PrinterOStream.hxx>

#include <chrono>
#include <cstdio>

int main(int count, char** arguments)
{
    if (count != 2)
        return 2;
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_PrinterOStream));
    const auto start = std::chrono::steady_clock::now();
    IGESControl_Reader reader;
    if (reader.ReadFile(arguments[1]) != IFSelect_RetDone)
        return 1;
    std::printf("%.1f\n", std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
}
