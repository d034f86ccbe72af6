// Runs the application at a desk, over the service that listens at a socket, until the input ends:
//
//     communications-service-sim --socket service --realtime &
//     build/new-application-desk service
#include "Application.h"
#include "kit/framework/Framework.h"
#include "kit/framework/SocketConnection.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <limits>
#include <memory>

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::cerr << "usage: " << argv[0] << " SOCKET\n";
        return 2;
    }
    try
    {
        std::unique_ptr<Application> application;  // outlives the framework that delivers to it
        kit::Framework framework(std::make_unique<kit::SocketConnection>(argv[1]));
        application = std::make_unique<Application>(
            framework.service(), [](const std::string& line, const std::string& caller)
            { std::cout << line << " speaks with " << caller << std::endl; });
        if (!application->start())
        {
            std::cerr << "the service does not answer\n";
            return 1;
        }
        std::cin.ignore(std::numeric_limits<std::streamsize>::max(), EOF);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
