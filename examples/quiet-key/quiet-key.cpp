// Presses the key twice and prints what goes over the channel.
#include "QuietKey.h"
#include "kit/framework/Subscription.h"
#include "kit/service/EmbeddedConnection.h"

#include <iostream>

int main()
{
    kit::Framework::Options options;
    options.events = kit::Framework::Events::onPump;
    options.observer = [](const kit::Passage& passage)
    {
        if (passage.what == kit::Passage::What::arrival)
            return;
        std::cout << (passage.what == kit::Passage::What::request ? "> " : "< ") << passage.text
                  << "\n";
    };
    kit::Framework framework(std::make_unique<kit::EmbeddedConnection>(), options);

    QuietKey key(framework.service(), "1001");
    framework.service().activate();
    const kit::Subscription subscription(framework, key);
    bool pressed = key.start();
    for (int i = 0; i < 2; ++i)
    {
        pressed = key.press() && pressed;
        framework.pump();
    }
    return pressed ? 0 : 1;
}
